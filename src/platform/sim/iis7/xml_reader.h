#pragma once
// Reads the XML of a configuration file into an XmlDocument that keeps every byte as written.

#include <memory>
#include <stdexcept>
#include <string>

#include "platform/sim/iis7/xml_tree.h"

namespace webrig::sim::iis7 {

// Text that is not well-formed XML (or not UTF-8), with the 1-based line of the fault.
class XmlSyntaxError : public std::runtime_error {
  public:
    XmlSyntaxError(int line, const std::string& message)
        : std::runtime_error(message), m_line(line) {}
    int line() const noexcept { return m_line; }

  private:
    int m_line;
};

// UTF-8 text, with or without a byte-order mark. A document type declaration with an internal
// subset is refused (configuration files have none, and entities could expand without bound).
XmlDocument ReadXml(std::shared_ptr<const std::string> text);

}  // namespace webrig::sim::iis7
