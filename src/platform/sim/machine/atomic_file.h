#pragma once
// Replacing a file so that a crash leaves either the old content or the new, never a mix.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <span>

namespace webrig::sim {

// Writes `bytes` to a temporary file in the same folder, flushes it to disk, renames it over
// `path` and flushes the folder. False (and no temporary file left) when any step fails; the
// old file is then untouched.
bool WriteFileAtomically(const std::filesystem::path& path, std::span<const std::byte> bytes);

// The calls whose order makes a replacement safe (the data reaches the disk before the new name
// does); WriteFileAtomically makes them through ::fsync and ::rename. Tests pass recording or
// failing ones.
struct DiskCalls {
    int (*fsync)(int fd);
    int (*rename)(const char* from, const char* to);
};
bool WriteFileAtomicallyThrough(const DiskCalls& calls, const std::filesystem::path& path,
                                std::span<const std::byte> bytes);

// How the machine stores a file; tests substitute one that fails.
using FileWriter = std::function<bool(const std::filesystem::path&, std::span<const std::byte>)>;

}  // namespace webrig::sim
