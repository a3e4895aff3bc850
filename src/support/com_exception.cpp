#include "support/com_exception.h"

#include "support/format.h"

namespace qm {

com_exception::com_exception(hresult error, wstring description, wstring source)
    : m_error(error), m_description(std::move(description)), m_source(std::move(source)) {
    wstring text = qm::format(u"COM error 0x%08X", error);
    if (!m_description.empty()) {
        text += u": " + m_description;
    }
    m_what = to_utf8(text);
}

safe_array_exception::safe_array_exception()
    : com_exception(hr::out_of_memory, u"a SAFEARRAY could not be created") {}

}  // namespace qm
