/// @file
/// zelm_soak: runs the demo's whole topology at full speed for some minutes and counts what comes of it. To be started
/// by scripts/soak, which makes the installation that it needs.
#include "child.h"
#include "settings.h"
#include "soak.h"

#include "installation.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>
#include <string>

#include <sys/prctl.h>
#include <unistd.h>

namespace {

struct Options {
    Soak::Settings settings;
    std::optional<unsigned> childSeed;
    std::string childScratch;
};

/// Empty if nothing is left to do, with the exit status.
std::optional<Options> parse(int argc, char** argv, int& status)
{
    Options options;
    auto& settings = options.settings;
    CLI::App app("Runs the demo's whole topology at full speed and counts what comes of it.", "zelm_soak");
    app.add_option("--minutes", settings.minutes, "How long; fractions count")
        ->check(CLI::Range(0.0, 100000.0))
        ->capture_default_str();
    app.add_option("--sensors", settings.sensors, "How many sensors at a time")
        ->check(CLI::Range(4, 10000))
        ->capture_default_str();
    app.add_option("--seed", settings.seed, "What comes and goes, and what children disturb")->capture_default_str();
    app.add_option("--patience", settings.patience, "Seconds without progress that are a hang")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    app.add_option("--break", settings.broken, "Make this fault, to see it found")
        ->check(CLI::IsMember({"loss", "duplicate", "memory", "descriptor", "child", "hang"}));
    app.add_option("--child", options.childSeed, "Be a child process")->group("");
    app.add_option("--scratch", options.childScratch, "What its files' names begin with")->group("");
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& failure) {
        status = app.exit(failure) == 0 ? 0 : 2;
        return std::nullopt;
    }
    return options;
}

}  // namespace

int main(int argc, char** argv)
{
    std::signal(SIGPIPE, SIG_IGN);
    int status = 0;
    auto const options = parse(argc, argv, status);
    if (!options)
        return status;
    try {
        Soak::useOwnInstallation();
        if (!options->childSeed)
            return Soak::runSoak(options->settings) ? 0 : 1;
        alarm(options->settings.patience);  // its signal ends a child that hangs
        prctl(PR_SET_PDEATHSIG, SIGKILL);   // nobody is left who would wait for it
        return Soak::runChild(*options->childSeed, options->childScratch, options->settings.broken == "child");
    } catch (std::exception const& failure) {
        std::cerr << "soak: " << failure.what() << std::endl;
        return 1;
    }
}
