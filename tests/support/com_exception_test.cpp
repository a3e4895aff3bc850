#include "support/com_exception.h"

#include <gtest/gtest.h>

#include <exception>
#include <string>

namespace {

struct WhatCase {
    const char* name;
    qm::hresult error;
    qm::wstring description;
    const char* what;
};

void PrintTo(const WhatCase& c, std::ostream* os) {
    *os << c.name;
}

class ComExceptionText : public ::testing::TestWithParam<WhatCase> {};

TEST_P(ComExceptionText, NamesTheCodeAndTheDescription) {
    const WhatCase& c = GetParam();
    const qm::com_exception error(c.error, c.description, u"IAppHostWritableAdminManager");
    EXPECT_STREQ(error.what(), c.what);
    EXPECT_EQ(error.error(), c.error);
    EXPECT_EQ(error.description(), c.description);
    EXPECT_EQ(error.source(), u"IAppHostWritableAdminManager");
}

INSTANTIATE_TEST_SUITE_P(
    Errors, ComExceptionText,
    ::testing::Values(WhatCase{"access_denied", static_cast<qm::hresult>(0x80070005u),
                               u"Access is denied.", "COM error 0x80070005: Access is denied."},
                      WhatCase{"no_description", static_cast<qm::hresult>(0x80004005u), u"",
                               "COM error 0x80004005"},
                      WhatCase{"small_code_padded", 0xB7, u"", "COM error 0x000000B7"},
                      WhatCase{"non_ascii_description", static_cast<qm::hresult>(0x80070002u),
                               u"Datei nicht gefunden: \u00FCber \u20AC \U0001F600",
                               "COM error 0x80070002: Datei nicht gefunden: \xC3\xBC"
                               "ber \xE2\x82\xAC "
                               "\xF0\x9F\x98\x80"},
                      WhatCase{"percent_signs_kept", static_cast<qm::hresult>(0x80070057u),
                               u"%s %d 100%", "COM error 0x80070057: %s %d 100%"}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

TEST(ComException, WithoutErrorInformationHasEmptyTextsAndIsAStdException) {
    try {
        throw qm::com_exception(qm::hr::no_interface);
    } catch (const std::exception& caught) {
        const auto& error = dynamic_cast<const qm::com_exception&>(caught);
        EXPECT_EQ(error.error(), static_cast<qm::hresult>(0x80004002u));
        EXPECT_TRUE(error.description().empty());
        EXPECT_TRUE(error.source().empty());
        EXPECT_STREQ(error.what(), "COM error 0x80004002");
    }
}

TEST(SafeArrayException, CarriesOutOfMemoryAndIsACOMException) {
    try {
        throw qm::safe_array_exception();
    } catch (const qm::com_exception& caught) {
        EXPECT_EQ(caught.error(), static_cast<qm::hresult>(0x8007000Eu));
        EXPECT_EQ(std::string(caught.what()).rfind("COM error 0x8007000E", 0), 0u) << caught.what();
        EXPECT_FALSE(caught.description().empty());
        return;
    }
    FAIL() << "safe_array_exception was not caught as com_exception";
}

}  // namespace
