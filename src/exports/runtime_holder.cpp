#include "exports/runtime_holder.h"

namespace webrig::exports {
namespace {

// Destroyed, with the instance it owns, when the module is unloaded.
std::unique_ptr<CIISProRuntime>& Holder() {
    static std::unique_ptr<CIISProRuntime> holder;
    return holder;
}

}  // namespace

CIISProRuntime* CurrentRuntime() noexcept {
    return Holder().get();
}

CIISProRuntime& ReplaceRuntime(std::unique_ptr<CIISProRuntime> runtime) {
    Holder() = std::move(runtime);
    return *Holder();
}

void ReleaseRuntime() noexcept {
    Holder().reset();
}

}  // namespace webrig::exports
