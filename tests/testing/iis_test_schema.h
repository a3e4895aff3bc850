#pragma once
// A small IIS 7+ schema for the configuration store's tests and benchmarks, written here so that
// they do not depend on the built-in one: the sections and attributes the runtime works with.

#include "platform/sim/iis7/schema.h"

namespace webrig::testing {

const sim::iis7::Schema& IisTestSchema();

}  // namespace webrig::testing
