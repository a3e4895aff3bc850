#pragma once
// The exception that carries a failed COM call out of the code that made it. Only operations
// throw it, and every operation that touches IIS catches it again before it returns a status.

#include <exception>
#include <string>

#include "support/result_codes.h"
#include "support/wide_string.h"

namespace qm {

class com_exception : public std::exception {
  public:
    // `description` and `source` are the texts of the thread's error information, when any.
    explicit com_exception(hresult error, wstring description = {}, wstring source = {});

    hresult error() const noexcept { return m_error; }
    const wstring& description() const noexcept { return m_description; }
    const wstring& source() const noexcept { return m_source; }
    const char* what() const noexcept override { return m_what.c_str(); }

  private:
    hresult m_error;
    wstring m_description;
    wstring m_source;
    std::string m_what;
};

// A SAFEARRAY could not be created.
class safe_array_exception : public com_exception {
  public:
    safe_array_exception();
};

}  // namespace qm
