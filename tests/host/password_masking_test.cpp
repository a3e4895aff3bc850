#include "host/password_masking.h"

#include <gtest/gtest.h>

#include "testing/recording_event_sink.h"

namespace webrig::host {
namespace {

struct MaskCase {
    const char16_t* hidden;
    const char16_t* name;
    bool masked;
};

class MaskPasswordValueTest : public ::testing::TestWithParam<MaskCase> {};

TEST_P(MaskPasswordValueTest, MasksSecretsAndOnlySecrets) {
    const MaskCase& c = GetParam();
    testing::RecordingEventSink sink;
    const qm::wstring logged = MaskPasswordValue(c.hidden, c.name, u"the value", &sink);
    EXPECT_EQ(logged, c.masked ? qm::wstring(u"********") : qm::wstring(u"the value"));
    EXPECT_TRUE(sink.logLines.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Names, MaskPasswordValueTest,
    ::testing::Values(
        MaskCase{u"", u"UserPassword", true},  //
        MaskCase{u"", u"sslpassword", true},   //
        MaskCase{u"", u"AnonyPASSWORDx", true},
        MaskCase{u"", u"Passwrd", false},  // "AnonyPasswrd" is not spelled out
        MaskCase{u"", u"Path", false},     //
        MaskCase{u"", u"6021", true},      // anonymous-user password
        MaskCase{u"", u"7502", true},      // application-pool identity password
        MaskCase{u"", u" 7502", true},     // read as a number, as the C library does
        MaskCase{u"", u"6021x", true},     // leading digits count
        MaskCase{u"", u"16021", false},    //
        MaskCase{u"Secret;Token", u"Token", true}, MaskCase{u"Secret;Token", u"Secret", true},
        MaskCase{u"Secret;Token", u"secret", false},  // the list is exact
        MaskCase{u"Secret;Token", u"Secret;Token", false}, MaskCase{u"Secret;Token", u"", false},
        // Empty pieces of the list name the empty property name.
        MaskCase{u";;", u"", true}, MaskCase{u"Secret;", u"", true}, MaskCase{u"", u"", true}));

}  // namespace
}  // namespace webrig::host
