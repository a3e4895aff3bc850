#pragma once
// A source of settings: fills the property bag once, at initialization.

#include <cstdint>

#include "support/wide_string.h"

class CIISPropertyBag;

class CIISLoader {
  public:
    // Fills `bag`; 0 on success, otherwise the status of the first failed step.
    virtual int32_t Load(CIISPropertyBag& bag) = 0;
    // Resolve a text value, a root directory and a certificate path through the host engine.
    virtual qm::wstring ResolveValue(qm::wstring value) = 0;
    virtual qm::wstring ResolveRootDir(qm::wstring value) = 0;
    virtual qm::wstring ResolveCertPath(qm::wstring value) = 0;
    virtual ~CIISLoader() = default;
};
