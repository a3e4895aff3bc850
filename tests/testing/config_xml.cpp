#include "testing/config_xml.h"

#include <stdexcept>

namespace webrig::testing {

std::unique_ptr<pugi::xml_document> ReadConfigXml(const std::filesystem::path& file) {
    auto document = std::make_unique<pugi::xml_document>();
    if (!document->load_file(file.c_str())) {
        throw std::runtime_error("cannot read " + file.string());
    }
    return document;
}

std::string ElementDifference(const pugi::xml_node& expected, const pugi::xml_node& actual) {
    const std::string where = std::string("/") + expected.name();
    if (std::string_view(expected.name()) != actual.name()) {
        return where + ": <" + actual.name() + "> instead";
    }
    pugi::xml_attribute b = actual.first_attribute();
    for (pugi::xml_attribute a = expected.first_attribute(); a; a = a.next_attribute()) {
        if (!b || std::string_view(a.name()) != b.name() ||
            std::string_view(a.value()) != b.value()) {
            return where + "@" + a.name() + ": differs";
        }
        b = b.next_attribute();
    }
    if (b) {
        return where + "@" + b.name() + ": added";
    }
    pugi::xml_node y = actual.first_child();
    const auto skip = [](pugi::xml_node node) {
        while (node && node.type() != pugi::node_element) {
            node = node.next_sibling();
        }
        return node;
    };
    for (pugi::xml_node x = skip(expected.first_child()); x; x = skip(x.next_sibling())) {
        y = skip(y);
        if (!y) {
            return where + "/" + x.name() + ": missing";
        }
        if (std::string difference = ElementDifference(x, y); !difference.empty()) {
            return where + difference;
        }
        y = y.next_sibling();
    }
    if ((y = skip(y))) {
        return where + "/" + y.name() + ": added";
    }
    return {};
}

}  // namespace webrig::testing
