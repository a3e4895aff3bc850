#pragma once
// A controller over a strict double of the IIS 7+ backend on a fresh simulated machine, with a
// bag at IIS 10 and a recording sink, that can accept every property write and keep it.

#include <gmock/gmock.h>

#include <optional>

#include "controller/bound_controllers.h"
#include "support/format.h"
#include "support/status_codes.h"
#include "testing/recording_event_sink.h"

namespace webrig::testing {

// One property write as the backend received it; numbers and texts both as text.
struct Write {
    uint32_t identifier;
    qm::wstring value;
};

class FlowTest : public ::testing::Test {
  protected:
    explicit FlowTest(const sim::MachineConfig& config = {}) : temp(config) {
        EXPECT_CALL(backend(), InitIISObject()).WillOnce(::testing::Return(0));
        controller.SetEventSink(&sink);
        bag.iisMajorVersion = 10;
        controller.SetPropertyBag(bag);
    }

    MockVistaBackend& backend() { return controller; }
    CIISVRootController& slots() { return controller; }

    // Every setter succeeds and its write is kept in `writes`.
    void AcceptWrites() {
        using ::testing::_;
        using ::testing::AnyNumber;
        using ::testing::Return;
        auto& b = backend();
        EXPECT_CALL(b, OpenKeyToWebsite(_, ::testing::NotNull(), _))
            .Times(AnyNumber())
            .WillRepeatedly(Return(0));
        EXPECT_CALL(b, SetVRtDWProperty(_, _, _))
            .Times(AnyNumber())
            .WillRepeatedly([this](uint32_t id, uint32_t, uint32_t value) {
                writes.push_back({id, qm::format(u"%d", static_cast<int32_t>(value))});
                return 0;
            });
        EXPECT_CALL(b, SetVRtStrProperty(_, _, _, _, _))
            .Times(AnyNumber())
            .WillRepeatedly([this](uint32_t id, uint32_t, uint32_t, const qm::wstring& value,
                                   const qm::wstring&) {
                writes.push_back({id, value});
                return 0;
            });
        EXPECT_CALL(b, SetVRtDelimMultiszProperty(_, _, _))
            .Times(AnyNumber())
            .WillRepeatedly([this](uint32_t id, uint32_t, const qm::wstring& value) {
                writes.push_back({id, value});
                return 0;
            });
        EXPECT_CALL(b, SetVRtMultiszProperty(_, _, _, _, _))
            .Times(AnyNumber())
            .WillRepeatedly([this](uint32_t id, uint32_t, const char16_t* data, uint32_t bytes,
                                   const qm::wstring&) {
                writes.push_back({id, qm::wstring(data, bytes / 2)});
                return 0;
            });
        EXPECT_CALL(b, SetDynamicMetaDataProperties(_))
            .Times(AnyNumber())
            .WillRepeatedly(Return(0));
        EXPECT_CALL(b, InstallMimeTypes(_, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
        EXPECT_CALL(b, SetFormsAuthentication(_, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
    }

    std::optional<qm::wstring> Written(uint32_t identifier) const {
        for (const Write& write : writes) {
            if (write.identifier == identifier) {
                return write.value;
            }
        }
        return std::nullopt;
    }

    TempMachine temp;
    VistaUnderTest controller{temp.machine()};
    CIISPropertyBag bag;
    RecordingEventSink sink;
    std::vector<Write> writes;
};

}  // namespace webrig::testing
