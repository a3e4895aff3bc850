#pragma once
// A failed configuration call: the HRESULT the administration object returns and the text its
// error information carries. Thrown inside an operation, turned into the result at the seam.

#include <string>

#include "support/result_codes.h"

namespace webrig::sim::iis7 {

struct ConfigFailure {
    qm::hresult hr;
    std::string text;
};

[[noreturn]] inline void Fail(qm::hresult hr, std::string text) {
    throw ConfigFailure{hr, std::move(text)};
}

}  // namespace webrig::sim::iis7
