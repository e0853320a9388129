#include "command_line.h"

#include "standard_output.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <stdexcept>

namespace HostMonitor {

namespace {

constexpr double longestInterval = 1e6;  // seconds: more than eleven days, and far from what the clock can't hold

/// The number if it is all of the text.
template <class T> std::optional<T> numberIn(std::string const& text)
{
    T value{};
    auto const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return value;
}

/// These say what is wrong, or nothing.
std::string checkInterval(std::string const& text)
{
    auto const seconds = numberIn<double>(text);
    if (seconds && *seconds >= 0 && *seconds <= longestInterval)  // false for NaN
        return {};
    return "expected seconds between 0 and " + std::to_string(static_cast<long>(longestInterval)) + ", got " + text;
}

std::string checkSamples(std::string const& text)
{
    // CLI11 itself takes -1 for the largest number.
    return numberIn<unsigned long>(text) ? "" : "expected a number of samples, got " + text;
}

}  // namespace

std::optional<Options> parseCommandLine(int argc, char const* const* argv, std::string const& defaultConfiguration)
{
    Options options;
    options.configuration = defaultConfiguration;
    std::optional<double> seconds;

    CLI::App app("Watches this machine: shows what the configured sensors measure.", "host_monitor");
    app.add_option("--config", options.configuration, "The components to use, as a JSON file")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--interval", seconds, "Time before each reading of each sensor, whatever its configuration says")
        ->type_name("SECONDS")
        ->check(CLI::Validator(checkInterval, ""));
    app.add_option("--samples", options.samples, "End after so many readings of each sensor; 0 goes on until Ctrl-C")
        ->type_name("N")
        ->check(CLI::Validator(checkSamples, ""));
    app.add_flag("--summary", options.summary,
                 "Tell on standard error at the end how many messages were published and reported");
    app.add_flag("--list", options.list, "List the component types that are installed, and end");
    try {
        app.parse(argc, argv);
    } catch (CLI::CallForHelp const&) {
        writeStandardOutput(app.help());
        return std::nullopt;
    } catch (CLI::ParseError const& failure) {
        throw std::runtime_error(failure.what());
    }
    if (seconds)
        options.interval =
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::duration<double>(*seconds));
    return options;
}

}  // namespace HostMonitor
