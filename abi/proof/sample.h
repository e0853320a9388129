// A library of one class, in which scripts/check-abi makes one change after the other, to see that it would notice them
// in the real one.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Zelm {

struct One {
    virtual ~One() = default;
};

struct Other {
    virtual ~Other() = default;
};

#ifdef OTHER_RESULT
using Result = std::shared_ptr<Other>;
#else
using Result = std::shared_ptr<One>;
#endif

#ifdef OTHER_MEMBER
using Numbers = std::vector<unsigned>;
#else
using Numbers = std::vector<int>;
#endif

class __attribute__((visibility("default"))) Sample {
public:
    Result result() const;

#ifdef OTHER_PARAMETER
    void take(std::vector<std::string> const& texts);
#else
    void take(std::vector<int> const& numbers);
#endif

#ifdef ADDED_FUNCTION
    void takeMore();
#endif

#ifdef OTHER_ORDER
    std::string second;
    std::string first;
#else
    std::string first;
    std::string second;
#endif
    Numbers numbers;

#ifdef OTHER_PRIVATE_MEMBER
private:
    std::unique_ptr<Other> hidden_;
#else
private:
    std::unique_ptr<One> hidden_;
#endif
};

}  // namespace Zelm
