#include "platform/sim/host_process/sim_host_objects.h"

#include <gtest/gtest.h>

namespace webrig::sim {
namespace {

class HostSource final : public platform::IHostOperationSource {
  public:
    qm::hresult GetOperationRecorder(qm::wstring_view,
                                     std::shared_ptr<platform::IOperationRecorder>&) override {
        return qm::hr::not_implemented;
    }
};

// The host owns its object: here it lives on the stack, so a delete would crash the test.
TEST(SimHostObjects, HandsBackTheHostsSourceWithoutOwningIt) {
    SimHostObjects objects;
    HostSource host;
    std::shared_ptr<platform::IHostOperationSource> source;
    ASSERT_EQ(
        objects.OperationSourceFrom(static_cast<platform::IHostOperationSource*>(&host), source),
        qm::hr::ok);
    EXPECT_EQ(source.get(), &host);
    source = std::make_shared<HostSource>();
    EXPECT_EQ(objects.OperationSourceFrom(nullptr, source), qm::hr::pointer);
    EXPECT_EQ(source, nullptr);
}

}  // namespace
}  // namespace webrig::sim
