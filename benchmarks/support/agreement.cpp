#include "support/agreement.h"

#include <exception>
#include <iostream>
#include <utility>
#include <vector>

namespace Zelm::Benchmarks {

namespace {

struct Check {
    std::string sentence;
    std::function<bool()> holds;
};

std::vector<Check>& checks()
{
    static std::vector<Check> all;
    return all;
}

bool holds(Check const& check)
{
    try {
        if (check.holds())
            return true;
        std::cerr << "benchmark: not so: " << check.sentence << std::endl;
    } catch (std::exception const& exception) {
        std::cerr << "benchmark: can't tell whether " << check.sentence << ": " << exception.what() << std::endl;
    }
    return false;
}

}  // namespace

Agreement::Agreement(std::string const& sentence, std::function<bool()> holds)
{
    checks().push_back({sentence, std::move(holds)});
}

bool allAgree()
{
    bool all = true;
    for (Check const& check : checks())
        all = holds(check) && all;
    return all;
}

}  // namespace Zelm::Benchmarks
