// The .reg reader must never crash, and whatever it reads must come back unchanged: byte for byte
// when untouched, as the same tree when written afresh or after edits.

#include <cstdlib>
#include <span>

#include "platform/sim/machine/machine_error.h"
#include "platform/sim/registry/reg_file.h"

namespace {

using webrig::sim::RegFile;
using webrig::sim::RegistryKey;

void Check(bool condition) {
    if (!condition) {
        std::abort();
    }
}

const RegistryKey* FirstAndLast(const RegistryKey& root, RegistryKey*& first) {
    const RegistryKey* last = &root;
    first = nullptr;
    RegistryKey* key = const_cast<RegistryKey*>(&root);
    while (!key->SubKeys().empty()) {
        key = key->SubKeys().rbegin()->second.get();
        last = key;
    }
    if (!root.SubKeys().empty()) {
        first = root.SubKeys().begin()->second.get();
    }
    return last;
}

void ExpectRereadsEqual(std::span<const std::byte> bytes, const RegFile& original) {
    const RegFile reread = RegFile::Parse(bytes, "fuzz.reg");
    Check(webrig::sim::SameTree(reread.Root(), original.Root()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::span<const std::byte> bytes(reinterpret_cast<const std::byte*>(data), size);
    std::optional<RegFile> file;
    try {
        file.emplace(RegFile::Parse(bytes, "fuzz.reg"));
    } catch (const webrig::sim::MachineError&) {
        return 0;
    }
    const auto untouched = file->Render();
    Check(untouched && untouched->bytes.size() == size &&
          std::equal(untouched->bytes.begin(), untouched->bytes.end(), bytes.begin()));

    const auto fresh = file->RenderAll();
    Check(fresh.has_value());
    ExpectRereadsEqual(*fresh, *file);

    // Edit the file as the registry would, then write only what changed.
    RegistryKey* first = nullptr;
    const RegistryKey* last = FirstAndLast(file->Root(), first);
    if (first != nullptr) {
        first->SetValue(u"fuzz", webrig::platform::RegValue::Dword(1));
        first->SetEdited(true);
    }
    RegistryKey& parent = const_cast<RegistryKey&>(*last);
    if (parent.Depth() < webrig::sim::kMaxKeyDepth && parent.FindSubKey(u"FuzzNew") == nullptr) {
        parent.AddSubKey(u"FuzzNew");
    }
    const auto edited = file->Render();
    Check(edited.has_value());
    ExpectRereadsEqual(edited->bytes, *file);
    return 0;
}
