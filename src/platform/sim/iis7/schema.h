#pragma once
// The IIS 7+ configuration schema the simulated configuration system knows: for each section,
// its elements, attributes and collections, with the types, defaults, keys and limits IIS checks.
// It is read, as IIS reads it, from the schema files of the machine's schema folder
// (schema_folder.h); our own files are built into the library and installed there by machine
// creation. Sections that a configuration file declares but no schema file describes cannot be
// read.
//
// Names of attributes, child elements and collection entries are looked up without regard to
// letter case, as the administration objects do (GetPropertyByName("Enable32BitAppOnWin64")
// finds "enable32BitAppOnWin64"); the schema's spelling is the one written to files.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "support/wide_string.h"

namespace webrig::sim::iis7 {

enum class AttributeType { boolean, uint32, int32, int64, string, timeSpan, enumeration, flags };

// The check a schema names in validationType; it decides what a refusal says.
enum class Validation {
    none,
    integerRange,
    timeSpanRange,
    nonEmptyString,
    siteName,
    applicationPoolName,
    virtualPath,
    trimWhiteSpace
};

// How a timeSpan is written: "hh:mm:ss", or a number of seconds or minutes.
enum class TimeSpanFormat { string, seconds, minutes };

// One name of an enum or flags attribute.
struct NamedValue {
    std::u16string name;
    uint32_t value = 0;
};

struct AttributeSchema {
    std::u16string name;
    // The name and the default in UTF-8, as files hold them; filled in by the Schema.
    std::string utf8Name;
    std::string utf8Default;
    AttributeType type = AttributeType::string;
    // The default as IIS writes it in a file ("true", "00:20:00", "Integrated"); empty when none.
    std::u16string defaultValue;
    bool required = false;
    bool isUniqueKey = false;
    bool isCombinedKey = false;
    bool caseSensitive = false;
    // Stored as "[enc:AesProvider:...:enc]" in the file.
    bool encrypted = false;
    // A string that names a path and may hold %VARIABLES%.
    bool expanded = false;
    // A string or flags value that may not be empty.
    bool validateNonEmpty = false;
    // Strings: characters the value may not hold (site and application pool names).
    std::u16string invalidCharacters;
    // Strings: a virtual path, "/" or "/a/b" (no trailing "/", no empty, "." or ".." segment).
    bool validateVirtualPath = false;
    // Numbers: inclusive range. timeSpan: range in seconds.
    std::optional<int64_t> minimum;
    std::optional<int64_t> maximum;
    // timeSpan: the value must be a multiple of this many seconds (0: any).
    uint32_t granularitySeconds = 0;
    // integerRange "min,max,exclude": the value may not lie in this inclusive range.
    std::optional<std::pair<int64_t, int64_t>> excludedRange;
    Validation validation = Validation::none;
    // Strings: no white space at either end (trimWhiteSpaceString).
    bool validateTrimmed = false;
    // Numbers and timeSpans: the text "Infinite" is a value too.
    bool allowInfinite = false;
    TimeSpanFormat timeSpanFormat = TimeSpanFormat::string;
    std::vector<NamedValue> values;  // enumeration and flags
};

struct ElementSchema;

// A collection held by an element: entries are added with `addElement` names and removed or
// cleared at lower levels with `removeElement` and `clearElement` (empty when not allowed).
struct CollectionSchema {
    std::vector<std::u16string> addElements;  // usually just "add"; "allow,deny" gives two
    std::u16string removeElement;
    std::u16string clearElement;
    // false: entries of a lower level come before the inherited ones.
    bool mergeAppend = true;
    bool allowDuplicates = false;
    // The child of the holding element that carries defaults for new entries
    // ("applicationPoolDefaults"); empty when none.
    std::u16string defaultElement;
    // Filled in by the Schema: the remove and clear names in UTF-8.
    std::string utf8Remove;
    std::string utf8Clear;
};

struct ElementSchema {
    std::u16string name;
    std::vector<AttributeSchema> attributes;
    std::vector<ElementSchema> children;
    // Present when the element holds a collection; its entries follow `entry`.
    std::optional<CollectionSchema> collection;
    std::vector<ElementSchema> entries;  // one per name in collection->addElements
    // Attributes the schema does not describe are kept rather than refused (provider lists).
    bool allowUnrecognizedAttributes = false;

    // Without regard to case, the exact spelling first (the administration objects' lookup).
    const AttributeSchema* FindAttribute(std::u16string_view attribute) const;
    const ElementSchema* FindChild(std::u16string_view child) const;
    const ElementSchema* FindEntry(std::u16string_view entryName) const;
    // Exactly as spelled (how files are read: names in files are case-sensitive).
    const AttributeSchema* FindExactAttribute(std::string_view spelled) const;
    const ElementSchema* FindExactChild(std::string_view spelled) const;
    const ElementSchema* FindExactEntry(std::string_view spelled) const;
    // Filled in by the Schema: the name in UTF-8.
    std::string utf8Name;
};

// How a section is declared where applicationHost.config does not declare it: .NET's
// machine.config declares system.web sections and configProtectedData. The simulated machine has
// no machine.config, so the schema carries that declaration.
struct MachineConfigDeclaration {
    std::u16string allowDefinition = u"Everywhere";  // or MachineToApplication, ...
    std::u16string overrideModeDefault = u"Allow";
};

struct SectionSchema {
    // Full name, "system.webServer/defaultDocument".
    std::u16string name;
    // Filled in by the Schema that holds the section: the name in UTF-8, and split at "/" into
    // the element names it has in a file.
    std::string utf8Name;
    std::vector<std::string> elementNames;
    ElementSchema root;
    // Present for the sections machine.config declares.
    std::optional<MachineConfigDeclaration> machineConfigDeclaration;
};

// One schema file: its name ("IIS_schema.xml") and its text.
struct SchemaFile {
    std::string name;
    std::string_view text;
};

// The schema of every section the configuration system can read and edit.
class Schema {
  public:
    // Webrig's own schema files, compiled into the library (builtin_schema_text.cpp.in), in the
    // order IIS would read them from the schema folder.
    static const std::vector<SchemaFile>& BuiltInFiles();
    // The schema of the built-in files; parsed once, shared and immutable.
    static const Schema& BuiltIn();
    // Reads schema text in the format of IIS's schema files (<configSchema><sectionSchema ...>).
    // Throws SchemaError naming the file, line, section and what is wrong; unknown element
    // names, attribute names, types and validation types are errors, so that a typo cannot pass
    // unnoticed.
    static Schema Parse(std::string_view xmlText, const std::string& fileName = "schema");
    // Reads several files, in order; a section a later file names again is extended by it (new
    // attributes, child elements and entries), as IIS lets an extension add to a section.
    static Schema FromFiles(const std::vector<SchemaFile>& files);

    // nullptr when the schema does not describe `sectionName` (exact comparison, as IIS).
    const SectionSchema* FindSection(std::u16string_view sectionName) const;
    const std::vector<SectionSchema>& sections() const noexcept { return m_sections; }

    // Unique in the process, never 0: what elements found valid for this schema are marked with.
    uint32_t id() const noexcept { return m_id; }

    explicit Schema(std::vector<SectionSchema> sections);
    Schema(Schema&&) noexcept;
    Schema& operator=(Schema&&) noexcept;
    ~Schema();

  private:
    std::vector<SectionSchema> m_sections;
    std::map<std::u16string, size_t, std::less<>> m_index;
    uint32_t m_id;
};

// Hands out the schema a fresh administration manager reads with: the machine's schema folder
// as it is now (schema_folder.h), or a fixed schema. Throws ConfigFailure when there is none.
using SchemaProvider = std::function<std::shared_ptr<const Schema>()>;
SchemaProvider FixedSchema(const Schema& schema);

class SchemaError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Attributes the configuration system gives every element (locks, configSource); no schema
// describes them.
bool IsConfigurationSystemAttribute(std::u16string_view name) noexcept;

}  // namespace webrig::sim::iis7
