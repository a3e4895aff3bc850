#pragma once
// The process-wide holder of the runtime instance.

#include <memory>

#include "exports/iis_pro_runtime.h"

namespace webrig::exports {

// The instance of the last QMIISInitialize; nullptr before the first.
CIISProRuntime* CurrentRuntime() noexcept;

// Makes `runtime` the current instance; the instance held before is destroyed.
CIISProRuntime& ReplaceRuntime(std::unique_ptr<CIISProRuntime> runtime);

// Destroys the current instance (module unload; tests).
void ReleaseRuntime() noexcept;

}  // namespace webrig::exports
