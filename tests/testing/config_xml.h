#pragma once
// Configuration files as element trees, so that tests compare elements and attributes rather
// than bytes.

#include <filesystem>
#include <memory>
#include <pugixml.hpp>
#include <string>

namespace webrig::testing {

// Throws std::runtime_error when the file cannot be read or parsed.
std::unique_ptr<pugi::xml_document> ReadConfigXml(const std::filesystem::path& file);

// "" when both hold the same elements with the same attributes in the same order (white space
// and comments aside); else the path of the first difference.
std::string ElementDifference(const pugi::xml_node& expected, const pugi::xml_node& actual);

}  // namespace webrig::testing
