/// @file
/// Adding components to the repository and removing them, where nothing but success will do.
///
/// Thread-safety: any thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace Zelm {
class ComponentInterface;
class ComponentsRepositoryInterface;
}  // namespace Zelm

namespace Soak {

/// Creates and starts one. Throws what the repository throws, and std::runtime_error if the id is taken.
std::shared_ptr<Zelm::ComponentInterface> startComponent(Zelm::ComponentsRepositoryInterface& repository,
                                                         std::string const& type, std::string const& id,
                                                         std::vector<std::string> const& arguments);
/// The same with one that is created already.
void startComponent(Zelm::ComponentsRepositoryInterface& repository,
                    std::shared_ptr<Zelm::ComponentInterface> const& component, std::string const& id);

/// Ends one. Throws std::runtime_error if it isn't in the repository.
void endComponent(Zelm::ComponentsRepositoryInterface& repository,
                  std::shared_ptr<Zelm::ComponentInterface> const& component);

/// Holds the repository, whose components are released when this goes.
struct EndOfComponents {
    EndOfComponents();
    ~EndOfComponents();

    std::shared_ptr<Zelm::ComponentsRepositoryInterface> const repository;
};

}  // namespace Soak
