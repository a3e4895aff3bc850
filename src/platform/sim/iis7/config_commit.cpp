// CommitChanges: every changed file is written atomically under the machine's lock, unless
// another writer replaced it since this manager read it.

#include <vector>

#include "platform/sim/iis7/config_session.h"
#include "platform/sim/machine/machine_lock.h"

namespace webrig::sim::iis7 {
namespace {

struct PendingWrite {
    WorkingFile* file;
    XmlDocument document;
    std::string bytes;
    size_t hash;
};

// The element at `path` as its parent holds it, or null when it is gone.
XmlElementPtr SharedAt(const XmlElement& root, const NodePath& path) {
    const XmlElement* parent = &root;
    XmlElementPtr found;
    for (const PathStep& step : path) {
        found = nullptr;
        for (const XmlChild& child : parent->children) {
            if (child.element && child.element->id == step.id) {
                found = child.element;
                break;
            }
        }
        if (!found) {
            return nullptr;
        }
        parent = found.get();
    }
    return found;
}

// A section kept in its own file takes the owner's working copy of it.
void SyncSource(const WorkingFile& owner, const SourcedSection& section) {
    const XmlElementPtr current = SharedAt(*owner.document.root, section.path);
    XmlDocument& source = section.source->document;
    const size_t index = source.DocumentElementIndex();
    if (current && source.root->children[index].element != current) {
        MakeMutable(source.root).children[index].element = current;
    }
}

// Whether the file on disk is still the one this manager read.
bool Unchanged(const WorkingFile& file) {
    const FileIdentity now = IdentifyFile(file.hostPath);
    if (now == file.loaded.identity) {
        return true;
    }
    if (!now.exists || !file.loaded.identity.exists) {
        return false;
    }
    // Touched or copied back but holding the same bytes: nothing is lost by writing.
    const std::optional<std::string> bytes = ConfigFileCache::ReadBytes(file.hostPath);
    return bytes && bytes->size() == file.loaded.identity.size &&
           HashContent(*bytes) == file.loaded.contentHash;
}

}  // namespace

qm::hresult ConfigSession::Commit() {
    for (const std::unique_ptr<WorkingFile>& file : m_files) {
        for (const SourcedSection& section : file->sourced) {
            SyncSource(*file, section);
        }
    }
    std::vector<PendingWrite> writes;
    for (const std::unique_ptr<WorkingFile>& file : m_files) {
        if (!file->Changed()) {
            continue;
        }
        XmlDocument document = Rendered(*file);
        std::string bytes = RenderXml(document);
        const size_t hash = HashContent(bytes);
        if (file->loaded.identity.exists && hash == file->loaded.contentHash &&
            bytes.size() == file->loaded.identity.size) {
            // Changed and changed back: the file stays as it is.
            file->readRoot = file->document.root;
            continue;
        }
        writes.push_back({file.get(), std::move(document), std::move(bytes), hash});
    }
    if (writes.empty()) {
        m_pending = false;
        return qm::hr::ok;
    }
    MachineLock lock(m_machine->lockFile);
    if (!lock.held()) {
        m_errorText = "the machine's lock file cannot be locked: " + m_machine->lockFile.string();
        return qm::hr::sharing_violation;
    }
    for (const PendingWrite& write : writes) {
        if (!Unchanged(*write.file)) {
            m_errorText = write.file->displayName +
                          ": the file has changed on disk since it was read; "
                          "nothing was written";
            return qm::hr::sharing_violation;
        }
        std::error_code error;
        if (!std::filesystem::is_directory(
                std::filesystem::path(write.file->hostPath).parent_path(), error)) {
            m_errorText = write.file->displayName + ": the folder does not exist";
            return qm::hr::path_not_found;
        }
    }
    for (PendingWrite& write : writes) {
        WorkingFile& file = *write.file;
        if (!m_machine->writer(file.hostPath,
                               std::as_bytes(std::span(write.bytes.data(), write.bytes.size())))) {
            m_errorText = file.displayName + ": the file cannot be written";
            return qm::hresult_from_win32(qm::win32::write_fault);
        }
        auto document = std::make_shared<const XmlDocument>(std::move(write.document));
        file.loaded = LoadedFile{IdentifyFile(file.hostPath), write.hash, document,
                                 file.isAppHost ? file.declarations : nullptr};
        file.readRoot = file.document.root;
        m_machine->cache->Store(file.hostPath, file.loaded);
    }
    m_pending = false;
    return qm::hr::ok;
}

}  // namespace webrig::sim::iis7
