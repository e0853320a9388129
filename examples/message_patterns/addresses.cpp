// Addresses as paths in a tree.
#include "ideas.h"

#include "zelm/msgs/address.h"

#include <iostream>
#include <string>
#include <vector>

namespace MessagePatterns {

void showAddresses()
{
    // quote begins: addresses
    using Zelm::Msgs::operator<<;  // or `using namespace Zelm::Msgs`: the standard library's types don't bring it along
    std::vector<std::string> const oven{"plant", "line 1", "oven"};
    std::vector<std::string> const roots[] = {
        {}, {"plant"}, {"plant", "line 1"}, oven, {"plant", "line 1", "oven", "door"}, {"plant", "line"}};
    for (auto const& root : roots)
        std::cout << oven << (Zelm::Msgs::inTree(root, oven) ? " is in the tree of " : " is not in the tree of ")
                  << root << '\n';
    // quote ends: addresses
}

}  // namespace MessagePatterns
