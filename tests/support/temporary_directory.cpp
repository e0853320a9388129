#include "temporary_directory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace Zelm::Testing {

TemporaryDirectory::TemporaryDirectory()
{
    std::string name =
        (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "zelm-test-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("can't make a temporary directory " + name);
    path_ = name;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;  // what can't be removed is left in the system's temporary directory
    std::filesystem::remove_all(path_, ignored);
}

void writeFile(std::string const& path, std::string const& content)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary);
    file << content;
    file.close();
    if (!file)
        throw std::runtime_error("can't write " + path);
}

std::string readFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("can't read " + path);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

}  // namespace Zelm::Testing
