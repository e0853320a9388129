#include "demo_installation.h"

#include <filesystem>
#include <stdexcept>

namespace HostMonitor::Testing {

namespace fs = std::filesystem;
using Zelm::Testing::ChildOptions;
using Zelm::Testing::ChildResult;
using Zelm::Testing::writeFile;

namespace {

std::string quoted(std::string const& text)
{
    return '"' + text + '"';
}

bool isObject(std::string const& argument)
{
    return !argument.empty() && argument.front() == '{';
}

}  // namespace

DemoInstallation::DemoInstallation()
{
    for (char const* const name : {"bin", "lib", "etc"})
        fs::create_directory(directory_ / name);
    fs::copy(HOST_MONITOR_PROGRAM, directory_ / "bin");
    for (char const* const library : {HOST_COMMON_LIBRARY, HOST_SENSORS_LIBRARY, HOST_ALARMS_LIBRARY,
                                      HOST_REPORTERS_LIBRARY, ZELM_MESSAGING_LIBRARY})
        fs::copy(fs::canonical(library), directory_ / "lib");
    auto const core = fs::canonical(ZELM_CORE_LIBRARY);
    fs::copy(core, directory_ / "lib");
    fs::create_symlink(core.filename(), directory_ / "lib/" + ZELM_CORE_SONAME);
    fs::copy(HOST_MONITOR_SOURCE_DIR "/etc", directory_ / "etc");
}

void DemoInstallation::addWitnesses()
{
    fs::copy(fs::canonical(WITNESSES_LIBRARY), directory_ / "lib");
}

void DemoInstallation::buildMap() const
{
    auto const child = run({"--list"});
    if (child.status != 0)
        throw std::runtime_error("the map wasn't built: " + child.err);
}

std::string DemoInstallation::configure(std::vector<std::string> const& components) const
{
    std::string text;
    for (auto const& line : components)
        text += (text.empty() ? "" : ",\n") + line;
    auto const path = directory_ / "etc/test.json";
    writeFile(path, "{\"components\":[\n" + text + "\n]}\n");
    return path;
}

ChildOptions DemoInstallation::options(std::vector<std::string> const& arguments) const
{
    ChildOptions result;
    result.with(arguments).in("/");
    if (Zelm::Testing::underSanitizer)
        result.set("LD_LIBRARY_PATH", directory_ / "lib");
    return result;
}

ChildResult DemoInstallation::run(std::vector<std::string> const& arguments) const
{
    return Zelm::Testing::runProgram(program(), options(arguments));
}

ChildResult DemoInstallation::runByShell(std::string const& arguments) const
{
    std::vector<std::string> words{"-c", "exec \"$@\" " + arguments, "sh"};
    for (auto const& word : Zelm::Testing::commandFor(program()))
        words.push_back(word);
    return Zelm::Testing::runProgram("/bin/sh", options(words));
}

std::string component(std::string const& id, std::string const& type, std::vector<std::string> const& arguments)
{
    std::string list;
    for (auto const& argument : arguments)
        list += (list.empty() ? "" : ",") + (isObject(argument) ? argument : quoted(argument));
    return "{\"id\":" + quoted(id) + ",\"type\":" + quoted(type) + ",\"arguments\":[" + list + "]}";
}

}  // namespace HostMonitor::Testing
