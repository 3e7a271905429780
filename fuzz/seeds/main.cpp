#include "fuzz/support/argument_types.h"
#include "fuzz/support/device_family.h"
#include "simulator/models.h"
#include "tools/resident/answers.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

/// @file
/// Makes the inputs that the targets begin with: what the simulated devices and peers say, and one or two
/// texts of each kind that no simulator makes.

namespace pyrux::fuzz {
namespace {

namespace fs = std::filesystem;

using Bytes = std::vector<std::uint8_t>;

/// The corpora below one folder, one for each target.
class Corpora {
public:
    explicit Corpora(fs::path to) : folder(std::move(to)) { fs::remove_all(folder); }

    void add(std::string_view target, const std::string& input)
    {
        const fs::path corpus = folder / ("fuzz_" + std::string(target));
        if (!seen[corpus].insert(input).second)
            return;
        fs::create_directories(corpus);
        std::ofstream file(corpus / std::to_string(seen[corpus].size()), std::ios::binary);
        file.exceptions(std::ios::badbit | std::ios::failbit);
        file << input;
    }
    void add(std::string_view target, const Bytes& input)
    {
        add(target, std::string(input.begin(), input.end()));
    }

private:
    fs::path folder;
    std::map<fs::path, std::set<std::string>> seen;
};

std::string withLength(const std::string& text, int lengthBytes)
{
    std::string length(1, char(text.size()));
    if (lengthBytes == 2)
        length += char(text.size() >> 8);
    return length + text;
}

void addDevices(Corpora& corpora)
{
    for (const std::string_view name : Family::all()) {
        const Family::Seeds seeds = Family(name).seeds();
        for (const Bytes& seed : seeds.replies)
            corpora.add(name, seed);
        for (const Bytes& seed : seeds.commands)
            corpora.add("firmware_commands", seed);
    }
}

void addPaths(Corpora& corpora)
{
    for (const std::string& name : sim::firmwareNames()) {
        const sim::Identity identity = sim::makeFirmware(name)->identity();
        for (const sim::Collection& one : identity.collections) {
            char path[128];
            std::snprintf(path, sizeof path, "HID#VID_%04X&PID_%04X&MI_%02X#sim-0001#{4d1e55b2}",
                          unsigned(identity.vid), unsigned(identity.pid), unsigned(one.interface & 0xFF));
            corpora.add("device_path", "\\\\?\\" + std::string(path));
            corpora.add("device_path", "\\\\?\\" + std::string(path) + "&ISDONGLE");
            corpora.add("device_notice", std::string(1, '\0') + path);
            corpora.add("device_notice", std::string(1, '\1') + path);
        }
    }
    corpora.add("device_notice", std::string("\2\x05\x01\x09\x06\xA1\x01\x06\x00\xFF\x0A\x01\x01\xC0", 14));
    corpora.add("device_notice", "\3USB\\VID_3A7E&PID_010D&MI_00\\6&1234");
}

void addPeers(Corpora& corpora)
{
    peer::Answers answers;
    for (const char* request :
         {"temp", "getcorenum", "getsysinfo", "version", "fake_temp", "fake_step", "{}"}) {
        const std::string answer = answers.to(request);
        corpora.add("service_reply", answer);
        corpora.add("service_pipe", withLength(answer, 2));
        corpora.add("service_pipe", withLength(answer, 2) + withLength("TW_OK", 2));
        corpora.add("resident_requests", std::string("fake_temp\n") + request);
    }
    corpora.add("service_pipe", withLength("TW_OK" + std::string(251, '.') + "TW_OK", 2));
    for (const char* command : {"debug?", "debug=1", "debug=0", "debugtype?", "debugtype=1", "debugtype=2"}) {
        corpora.add("debug_console", command);
        corpora.add("debug_console", withLength(command, 1) + withLength("debug?", 1));
    }
}

void addSystem(Corpora& corpora)
{
    corpora.add("profile_file", "; settings\n[PYRUX]\ndebug=1\n");
    corpora.add("profile_file", "[pyrux]\r\n  Debug = \"-12\" ; why\r\n[other]\r\ndebug:3\r\n");
    corpora.add("system_files", std::string(1, '\0') + "cpu  10 20 30 400 5 0 0 0 0 0\ncpu0 10 20 30 400\n");
    corpora.add("system_files",
                std::string(1, '\0') + "MemTotal:  16300000 kB\nMemFree: 1 kB\nMemAvailable: 8000000 kB\n");
    corpora.add("system_files", "\1XKBMODEL=\"pc105\"\nXKBLAYOUT=\"de,us\"\n");
    corpora.add("system_files", "\2processor\t: 0\nmodel name\t: Some Processor 9\n");
    // A memory device of 8 GiB, with its maker and part, and the end.
    const std::string module =
        std::string("\x11\x1B\0\0\0\0\0\0\0\0\0\0\0\x20\0\0\0\0\0\0\0\0\0\1\0\0\2", 27) +
        std::string("Maker\0Part\0\0", 12) + std::string("\x7F\4\1\0\0\0", 6);
    corpora.add("smbios", module);
    corpora.add("system_files", "\3" + module);
    const std::string keyboard("evdev\0pc105\0us,de\0,nodeadkeys\0\0", 31);
    corpora.add("keyboard_layout", std::string(1, '\0') + keyboard);
    corpora.add("keyboard_layout", "\1" + keyboard);
}

void addDocuments(Corpora& corpora, const fs::path& scripts)
{
    for (const fs::directory_entry& script : fs::directory_iterator(scripts)) {
        std::ifstream file(script.path());
        for (std::string line; std::getline(file, line);)
            corpora.add("ctl_script", line);
    }
    for (std::size_t i = 0; i < argumentTypes().size(); ++i)
        for (const int filling : {0, 1}) {
            const ctl::Type& type = *argumentTypes()[i];
            const std::vector<std::byte> value(type.size, std::byte(filling));
            corpora.add("ctl_documents",
                        std::string{char(i), char(i >> 8)} + ctl::toText(ctl::toJson(type, value.data())));
        }
}

int run(int count, char** arguments)
{
    if (count != 3) {
        std::fputs("usage: fuzz_seeds FOLDER SCRIPTS\n", stderr);
        return 2;
    }
    const std::vector<std::string> strays = Family::strays();
    for (const std::string& stray : strays)
        std::fprintf(stderr, "No target has the replies of %s: see fuzz/support/device_family.cpp.\n",
                     stray.c_str());
    if (!strays.empty())
        return 1;
    Corpora corpora(arguments[1]);
    addDevices(corpora);
    addPaths(corpora);
    addPeers(corpora);
    addSystem(corpora);
    addDocuments(corpora, arguments[2]);
    return 0;
}

} // namespace
} // namespace pyrux::fuzz

int main(int count, char** arguments)
{
    try {
        return pyrux::fuzz::run(count, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fuzz_seeds: %s\n", error.what());
        return 1;
    }
}
