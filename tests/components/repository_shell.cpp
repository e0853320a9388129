#include "tests/components/repository_shell.h"

#include "tests/components/scripted.h"
#include "zelm/components/component_factory.h"
#include "zelm/components/components_repository.h"
#include "zelm/core/exceptions.h"

#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <typeinfo>

namespace Zelm::Testing {

namespace {

std::string const& classNameOf(std::type_info const& type)
{
    static std::map<std::string, std::string> const names = {
        {typeid(Exception::FailedToCreateComponent).name(), "FailedToCreateComponent"},
        {typeid(Exception::MissingComponent).name(), "MissingComponent"},
        {typeid(Exception::FailedToLoad).name(), "FailedToLoad"},
        {typeid(std::runtime_error).name(), "runtime_error"},
    };
    return names.at(type.name());
}

/// Runs lines; see the top of repository_shell.h.
class Shell {
public:
    explicit Shell(std::shared_ptr<ComponentsRepositoryInterface> repository) : repository_(std::move(repository)) {}

    void run(std::string const& line)
    {
        std::istringstream stream(line);
        std::string command;
        stream >> command;
        std::vector<std::string> words;
        for (std::string word; stream >> word;)
            words.push_back(word);
        std::string result;
        try {
            result = call(command, words);
        } catch (std::exception const& error) {
            result = classNameOf(typeid(error)) + ": " + error.what();
        } catch (int number) {
            result = "the number " + std::to_string(number);
        }
        std::cout << "> " << line << " = " << result << std::endl;
    }

private:
    std::string call(std::string const& command, std::vector<std::string> words)
    {
        auto const take = [&words] {
            auto word = words.at(0);
            words.erase(words.begin());
            return word;
        };
        if (command == "create") {
            auto const type = take();
            return text(repository_->createComponent(type, words));
        }
        if (command == "instantiate") {
            auto const type = take();
            auto const id = take();
            return text(repository_->instantiateComponent(type, id, words));
        }
        if (command == "add")  // a new component of the program's own
            return text(repository_->addComponent(std::make_shared<Plain>(), take()));
        if (command == "remove")
            return text(repository_->removeComponent(repository_->findComponent(take())));
        if (command == "find")
            return text(repository_->findComponent(take()));
        if (command == "types")
            return typesOf(take());
        if (command == "release") {
            repository_->releaseAllComponents();
            return "done";
        }
        throw std::logic_error("no command: " + command);
    }

    std::string text(std::shared_ptr<ComponentInterface> const& component)
    {
        if (!component)
            return "none";
        std::size_t number = 0;
        while (number < seen_.size() && seen_[number] != component)
            ++number;
        if (number == seen_.size())
            seen_.push_back(component);
        return "#" + std::to_string(number + 1) + " \"" + component->instanceId() + '"';
    }

    static std::string text(Error error)
    {
        return std::string(error ? "true" : "false") + ", code " + std::to_string(error.code()) + ", category " +
               std::to_string(static_cast<int>(error.category())) + ", " + error.info();
    }

    /// What the factory of that id supports.
    std::string typesOf(std::string const& id)
    {
        auto const factory = std::dynamic_pointer_cast<ComponentFactoryInterface>(repository_->findComponent(id));
        std::string types;
        for (auto const& entry : factory->supportedComponents())
            types += " " + entry.first;
        return "[" + types + " ]";
    }

    std::shared_ptr<ComponentsRepositoryInterface> repository_;
    std::vector<std::shared_ptr<ComponentInterface>> seen_;
};

/// Runs its arguments as lines.
ZELM_CHILD(runsLines)
{
    Shell shell(ComponentsRepositoryInterface::getComponentsRepository());
    for (auto const& line : childArguments()) {
        if (line == "exit") {
            std::cout << "> exit" << std::endl;
            return 0;
        }
        shell.run(line);
    }
    std::cout.setstate(std::ios::failbit);  // the log of the exit isn't asked for
    return 0;
}

}  // namespace

void expectLines(ChildOptions options, std::vector<std::string> const& lines, std::vector<std::string> const& out,
                 std::string const& err)
{
    std::string text;
    for (auto const& line : out)
        text += line + "\n";
    auto const child = runChild("runsLines", options.with(lines));
    EXPECT_EQ(child.out, text);
    EXPECT_EQ(child.err, err);
    EXPECT_EQ(child.status, 0);
}

void expectLines(TemporaryInstallation const& installation, std::vector<std::string> const& lines,
                 std::vector<std::string> const& out, std::string const& err)
{
    expectLines(installation.options(), lines, out, err);
}

std::string failed(std::string const& name, std::string const& detail)
{
    return "FailedToCreateComponent: Failed to Create Component Type \"" + name + "\": " + detail;
}

std::string missing(std::string const& name, std::string const& detail)
{
    return "MissingComponent: Failed to Create Component Type \"" + name + "\": Component not found: " + detail;
}

InstalledCars::InstalledCars()
{
    add("calls_back");
    auto const name = libraryName("calls_back");
    writeFile(mapFile(), MapText{{{"Car", name}, {"Overtaken", name}, {"Engine", engines}},
                                 {{name, writeTime}, {engines, writeTime}}}
                             .text());
}

}  // namespace Zelm::Testing
