#pragma once
// `webrig install` and `webrig uninstall`/`rollback`: the eight exports driven as the installer
// engine drives them, with the command's host and event sink.

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "run_output.h"

namespace webrig::cli {

struct InstallRequest {
    std::string settingsPath;
    std::vector<std::string> components;  // empty: every component of the file
    std::string stringsPath;
    std::vector<std::string> properties;  // NAME=VALUE
    std::vector<std::string> supportFiles;
    std::string journalPath;
    // A run on a throw-away machine (plan): its journal is not the user's to be told about.
    bool throwaway = false;
};

// NAME=VALUE texts as a property table; InputError for one without "=" or without a name.
std::map<qm::wstring, qm::wstring> ParseProperties(const std::vector<std::string>& assignments);

// The values of the properties whose names say they are secret (PASSWORD, PWD).
std::vector<qm::wstring> SecretValues(const std::map<qm::wstring, qm::wstring>& properties);

// QMIISInitialize, then per component QMIISCheckForContinue and QMIISComponentInstall, then
// QMIISUninitialize. The exit code: 0, 1 when a step reported a failure, 2 for bad input.
int RunInstall(const std::filesystem::path& machineFolder, const InstallRequest& request,
               RunOutput& output);

// The four uninstall calls for the journal's records in reverse order: all runs of the journal
// (uninstall) or its last run (rollback).
int RunRemoval(const std::filesystem::path& machineFolder, const std::string& journalPath,
               bool rollback, RunOutput& output);

}  // namespace webrig::cli
