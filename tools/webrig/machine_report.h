#pragma once
// What a simulated machine's IIS holds, read through its configuration system and registry the
// way an administrator would look: sites with bindings, applications and virtual directories,
// application pools, web service extensions, certificates and HTTP.sys SSL bindings.

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "platform/sim/machine/machine.h"

namespace webrig::cli {

struct VirtualDirectoryView {
    std::string path;
    std::string physicalPath;
};

struct ApplicationView {
    std::string path;
    std::string pool;
    std::vector<VirtualDirectoryView> virtualDirectories;
};

struct BindingView {
    std::string protocol;
    std::string information;
};

struct SiteView {
    std::string name;
    std::string id;
    std::vector<BindingView> bindings;
    std::vector<ApplicationView> applications;
};

struct PoolView {
    std::string name;
    std::string identity;  // the identity type, with the user name of a specific user
    std::string runtime;
    std::string pipeline;
};

struct ExtensionView {
    std::string path;
    std::string description;
    std::string group;
    bool allowed = false;
};

struct CertificateView {
    std::string store;
    std::string thumbprint;
};

struct SslBindingView {
    std::string endpoint;
    std::string certificateHash;
    std::string store;
};

struct MachineReport {
    std::string windows;
    std::string architecture;
    std::string iis;
    // Why the IIS configuration could not be read; empty when it was.
    std::string configurationProblem;
    std::vector<SiteView> sites;
    std::vector<PoolView> pools;
    std::vector<ExtensionView> extensions;
    std::vector<CertificateView> certificates;
    std::vector<SslBindingView> sslBindings;
};

MachineReport ReadMachineReport(sim::Machine& machine);

// A tree for people: sites → bindings → applications → virtual directories, then the rest.
void PrintMachineReport(const MachineReport& report, std::ostream& out);
nlohmann::json MachineReportJson(const MachineReport& report);

// What the second report has that the first has not ("created") and the reverse ("removed"),
// one line each, for plan's summary.
std::vector<std::string> DescribeReportChanges(const MachineReport& before,
                                               const MachineReport& after);

}  // namespace webrig::cli
