#include "tests/boundary/ElfFile.h"

#include <elf.h>

#include <bit>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace
{

struct Elf32 {
    using Header = Elf32_Ehdr;
    using Section = Elf32_Shdr;
    using Symbol = Elf32_Sym;
    using Dynamic = Elf32_Dyn;
};

struct Elf64 {
    using Header = Elf64_Ehdr;
    using Section = Elf64_Shdr;
    using Symbol = Elf64_Sym;
    using Dynamic = Elf64_Dyn;
};

class Bytes
{
  public:
    Bytes(std::string bytes, bool swapped) : bytes_(std::move(bytes)), swapped_(swapped) {}

    // A number as the machine of the file wrote it.
    template <typename Number>
    Number Native(Number number) const
    {
        if (!swapped_)
            return number;
        unsigned char raw[sizeof number];
        std::memcpy(raw, &number, sizeof number);
        for (size_t low = 0, high = sizeof number - 1; low < high; ++low, --high)
            std::swap(raw[low], raw[high]);
        std::memcpy(&number, raw, sizeof number);
        return number;
    }

    template <typename Record>
    Record At(uint64_t offset) const
    {
        if (offset > bytes_.size() || bytes_.size() - offset < sizeof(Record))
            throw std::out_of_range("the ELF file ends early");
        Record record;
        std::memcpy(&record, bytes_.data() + offset, sizeof record);
        return record;
    }

    std::string Text(uint64_t offset) const
    {
        if (offset >= bytes_.size())
            throw std::out_of_range("the ELF file ends early");
        return bytes_.data() + offset;
    }

  private:
    std::string bytes_;
    bool swapped_;
};

template <typename Elf>
class Reader
{
  public:
    explicit Reader(const Bytes &bytes) : bytes_(bytes)
    {
        const auto header = bytes.At<typename Elf::Header>(0);
        const uint64_t table = bytes.Native(header.e_shoff);
        for (uint64_t i = 0; i < bytes.Native(header.e_shnum); ++i)
            sections_.push_back(bytes.At<typename Elf::Section>(table + i * sizeof(typename Elf::Section)));
        names_ = bytes.Native(sections_.at(bytes.Native(header.e_shstrndx)).sh_offset);
    }

    ElfFile Read() const
    {
        ElfFile file;
        file.pointerBytes = sizeof(typename Elf::Dynamic) / 2; // a tag and a value
        for (const auto &section : sections_)
            AddSection(&file, section);
        return file;
    }

  private:
    uint64_t Offset(const typename Elf::Section &section) const { return bytes_.Native(section.sh_offset); }
    uint64_t Size(const typename Elf::Section &section) const { return bytes_.Native(section.sh_size); }

    const typename Elf::Section &Linked(const typename Elf::Section &section) const
    {
        return sections_.at(bytes_.Native(section.sh_link));
    }

    void AddSection(ElfFile *file, const typename Elf::Section &section) const
    {
        const auto flags = bytes_.Native(section.sh_flags);
        file->sections.push_back({bytes_.Text(names_ + bytes_.Native(section.sh_name)), Size(section),
                                  (flags & SHF_ALLOC) != 0 && (flags & SHF_WRITE) != 0});
        if (bytes_.Native(section.sh_type) == SHT_DYNSYM)
            AddSymbols(file, section);
        if (bytes_.Native(section.sh_type) == SHT_DYNAMIC)
            AddNeeded(file, section);
    }

    void AddSymbols(ElfFile *file, const typename Elf::Section &section) const
    {
        const uint64_t strings = Offset(Linked(section));
        const uint64_t count = Size(section) / sizeof(typename Elf::Symbol);
        for (uint64_t i = 1; i < count; ++i) { // the first is empty in every file
            const auto symbol =
                bytes_.At<typename Elf::Symbol>(Offset(section) + i * sizeof(typename Elf::Symbol));
            if (symbol.st_info >> 4 == STB_LOCAL)
                continue; // a section
            file->dynamicSymbols.push_back({bytes_.Text(strings + bytes_.Native(symbol.st_name)),
                                            bytes_.Native(symbol.st_shndx) != SHN_UNDEF, IsVersioned(i)});
        }
    }

    bool IsVersioned(uint64_t symbol) const
    {
        for (const auto &section : sections_)
            if (bytes_.Native(section.sh_type) == SHT_GNU_versym)
                return bytes_.Native(bytes_.At<uint16_t>(Offset(section) + 2 * symbol)) > VER_NDX_GLOBAL;
        return false;
    }

    void AddNeeded(ElfFile *file, const typename Elf::Section &section) const
    {
        const uint64_t strings = Offset(Linked(section));
        for (uint64_t at = 0; at < Size(section); at += sizeof(typename Elf::Dynamic)) {
            const auto entry = bytes_.At<typename Elf::Dynamic>(Offset(section) + at);
            if (bytes_.Native(entry.d_tag) == DT_NEEDED)
                file->neededLibraries.push_back(bytes_.Text(strings + bytes_.Native(entry.d_un.d_val)));
        }
    }

    const Bytes &bytes_;
    std::vector<typename Elf::Section> sections_;
    uint64_t names_ = 0;
};

} // namespace

uint64_t ElfFile::SizeOf(const std::string &name) const
{
    for (const ElfSection &section : sections)
        if (section.name == name)
            return section.size;
    return 0;
}

std::optional<ElfFile> ReadElfFile(const std::string &path)
{
    std::ifstream stream(path, std::ios::binary);
    std::string raw((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    if (raw.size() < EI_NIDENT || std::memcmp(raw.data(), ELFMAG, SELFMAG) != 0)
        return std::nullopt;
    const bool wide = raw[EI_CLASS] == ELFCLASS64;
    const bool big = raw[EI_DATA] == ELFDATA2MSB;
    const Bytes bytes(std::move(raw), big != (std::endian::native == std::endian::big));
    return wide ? Reader<Elf64>(bytes).Read() : Reader<Elf32>(bytes).Read();
}
