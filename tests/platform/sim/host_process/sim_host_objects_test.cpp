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

TEST(SimHostObjects, HandsBackTheHostsSourceWithoutOwningIt) {
    SimHostObjects objects;
    std::weak_ptr<platform::IHostOperationSource> observer;
    {
        auto host = std::make_shared<HostSource>();
        std::shared_ptr<platform::IHostOperationSource> source;
        ASSERT_EQ(objects.OperationSourceFrom(
                      static_cast<platform::IHostOperationSource*>(host.get()), source),
                  qm::hr::ok);
        EXPECT_EQ(source.get(), host.get());
        source.reset();  // must not delete the host's object
        EXPECT_EQ(host.use_count(), 1);
        observer = host;
    }
    EXPECT_TRUE(observer.expired());
}

TEST(SimHostObjects, ANullArgumentIsAPointerError) {
    SimHostObjects objects;
    std::shared_ptr<platform::IHostOperationSource> source = std::make_shared<HostSource>();
    EXPECT_EQ(objects.OperationSourceFrom(nullptr, source), qm::hr::pointer);
    EXPECT_EQ(source, nullptr);
}

}  // namespace
}  // namespace webrig::sim
