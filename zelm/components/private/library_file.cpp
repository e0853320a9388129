#include "zelm/components/private/library_file.h"

#include "zelm/core/private/file_kind.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <vector>

#include <elf.h>

namespace Zelm::Private {

namespace {

template <class T> bool readAt(std::ifstream& file, std::uint64_t offset, T* out, std::size_t count)
{
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(reinterpret_cast<char*>(out), static_cast<std::streamsize>(count * sizeof(T)));
    return file.good();
}

bool isNativeElf(Elf64_Ehdr const& header)
{
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == ELFCLASS64 &&
           header.e_ident[EI_DATA] == ELFDATA2LSB && header.e_phentsize == sizeof(Elf64_Phdr);
}

/// Whether the file is a shared library of which the end is missing. False for one that is no 64-bit little-endian ELF
/// file.
bool isCutOff(std::string const& path)
{
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    auto const end = file.tellg();
    if (end < 0)
        return false;
    auto const size = static_cast<std::uint64_t>(end);

    Elf64_Ehdr header;
    if (!readAt(file, 0, &header, 1) || !isNativeElf(header))
        return false;
    std::vector<Elf64_Phdr> segments(header.e_phnum);
    if (!readAt(file, header.e_phoff, segments.data(), segments.size()))
        return true;
    return std::any_of(segments.begin(), segments.end(), [size](Elf64_Phdr const& segment) {
        bool const fits = segment.p_filesz <= size && segment.p_offset <= size - segment.p_filesz;
        return segment.p_type == PT_LOAD && !fits;
    });
}

}  // namespace

std::string reasonNotToLoad(std::string const& path)
{
    auto const kind = fileKindOf(path.c_str());
    if (kind != FileKind::Regular && kind != FileKind::None)
        return "not a regular file";
    return isCutOff(path) ? "file too short" : "";
}

}  // namespace Zelm::Private
