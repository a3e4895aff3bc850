// The COM side of the Win32 layer under Wine: BSTRs and VARIANT conversion by OLE Automation
// itself, the host's operation objects reached by their vtable slots, the thread's error
// information carried into qm::com_exception, and ADSI without IIS's provider.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/operation_recording.h"
#include "platform/win32/com_error.h"
#include "platform/win32/com_values.h"
#include "platform/win32/win32_platform.h"
#include "wine_test_support.h"

namespace webrig::windows_testing {
namespace {

using ::testing::ElementsAre;

class Win32ComTest : public ::testing::Test {
  protected:
    win32::Win32Platform platform;
};

struct TextCase {
    platform::Variant value;
    qm::wstring text;
};

// The same texts the simulated machine gives: VariantChangeType without flags writes a
// VARIANT_BOOL as the 16-bit integer it is.
TEST_F(Win32ComTest, ValuesBecomeTheTextVariantChangeTypeMakes) {
    const std::vector<TextCase> cases{
        {std::monostate{}, u""},
        {true, u"-1"},
        {false, u"0"},
        {int32_t{-5}, u"-5"},
        {uint32_t{4000000000u}, u"4000000000"},
        {int64_t{-9000000000}, u"-9000000000"},
        {uint64_t{18446744073709551615u}, u"18446744073709551615"},
        {qm::wstring(u"Default Web Site"), u"Default Web Site"},
    };
    for (const TextCase& c : cases) {
        qm::wstring text = u"unchanged";
        EXPECT_EQ(platform.automation().ChangeTypeToText(c.value, text), 0) << qm::to_utf8(c.text);
        EXPECT_EQ(text, c.text);
    }
}

TEST_F(Win32ComTest, TheHostsRecorderIsReachedThroughTheOperationsVariant) {
    const TestHost host;
    win32::ScopedVariant operations;
    host.CreateOperations(operations.get());
    const auto recorder = host::ObtainOperationRecorder(platform.hostObjects(), &operations.get());
    ASSERT_NE(recorder, nullptr);
    host::RecordItemCreated(recorder.get(), false, u"IIS VRoot Created", u"Shop/vdir \u00e9");
    host::RecordItemCreated(recorder.get(), true, u"IIS AppPool Created", u"Suppressed");
    EXPECT_THAT(host.Journal(), ElementsAre(L"GetRecorder OPTYPE_GENERAL",
                                            L"Record IIS VRoot Created|Shop/vdir \u00e9"));
}

TEST_F(Win32ComTest, ARecorderThatRefusesRaisesTheComErrorWithItsCode) {
    const TestHost host;
    win32::ScopedVariant operations;
    host.CreateOperations(operations.get(), E_ACCESSDENIED);
    const auto recorder = host::ObtainOperationRecorder(platform.hostObjects(), &operations.get());
    try {
        host::RecordItemCreated(recorder.get(), false, u"IIS WebSite Created", u"Shop");
        FAIL() << "no exception";
    } catch (const qm::com_exception& error) {
        EXPECT_EQ(error.error(), static_cast<qm::hresult>(E_ACCESSDENIED));
    }
}

TEST_F(Win32ComTest, TheThreadsErrorInformationTravelsInTheComException) {
    win32::ComPtr<ICreateErrorInfo> created;
    ASSERT_EQ(::CreateErrorInfo(created.receive()), S_OK);
    created->SetDescription(const_cast<LPOLESTR>(L"Cannot write configuration file"));
    created->SetSource(const_cast<LPOLESTR>(L"AppHostAdmin"));
    win32::ComPtr<IErrorInfo> info;
    ASSERT_EQ(created->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(info.receive())),
              S_OK);
    ASSERT_EQ(::SetErrorInfo(0, info.get()), S_OK);

    const qm::com_exception error = win32::ComError(static_cast<qm::hresult>(0x80070005u));
    EXPECT_EQ(error.error(), static_cast<qm::hresult>(0x80070005u));
    EXPECT_EQ(error.description(), u"Cannot write configuration file");
    EXPECT_EQ(error.source(), u"AppHostAdmin");
    EXPECT_STREQ(error.what(), "COM error 0x80070005: Cannot write configuration file");
    // The information is taken: a later failure does not repeat it.
    EXPECT_EQ(win32::ComError(E_FAIL).description(), u"");
}

TEST_F(Win32ComTest, ActiveDsIsLoadedByPathAndItsFunctionFoundByName) {
    const ScratchFolder folder;
    const struct {
        std::wstring path;
        uint32_t error;
    } cases[] = {
        {folder.path() + L"\\absent.dll", qm::win32::mod_not_found},
        {ProgramFolder() + L"\\QMRT.dll", qm::win32::proc_not_found},
        {folder.Write(L"activeds.dll", std::vector<std::byte>(64, std::byte{'x'})),
         platform::kErrorBadExeFormat},
    };
    for (const auto& [path, error] : cases) {
        std::unique_ptr<platform::ActiveDs> library;
        EXPECT_EQ(platform.adsi().LoadActiveDs(Utf16(path), library), error);
        EXPECT_EQ(library, nullptr);
    }
}

TEST_F(Win32ComTest, WithoutIisAdsiHasNoIisWebServiceObject) {
    std::unique_ptr<platform::ActiveDs> library;
    ASSERT_EQ(platform.adsi().LoadActiveDs(platform.system().SystemDirectory() + u"\\activeds.dll",
                                           library),
              0u);
    std::unique_ptr<platform::IisWebService> service;
    // Windows without IIS's ADSI provider answers E_ADS_BAD_PATHNAME; Wine 8's activeds.dll,
    // which knows no "IIS:" provider either, answers E_FAIL.
    const qm::hresult hr = library->GetWebService(u"IIS://localhost/w3svc", service);
    EXPECT_TRUE(hr == platform::adsi_error::bad_pathname || hr == qm::hr::fail) << std::hex << hr;
    EXPECT_EQ(service, nullptr);
}

}  // namespace
}  // namespace webrig::windows_testing
