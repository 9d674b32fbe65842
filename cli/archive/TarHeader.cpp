#include "cli/archive/TarHeader.h"

#include "jobs/LateLibraries.h"

#include <archive.h>
#include <archive_entry.h>

#include <clocale>
#include <fmt/format.h>
#include <memory>
#include <new>
#include <stdexcept>

namespace vxhost
{

namespace
{

constexpr mode_t kMode = 0644;

struct FreeArchive {
    void operator()(archive *tar) const { (void)archive_write_free(tar); }
};

struct FreeEntry {
    void operator()(archive_entry *entry) const { archive_entry_free(entry); }
};

struct Header {
    std::string text;
    bool isWhole = false; // what is written then is the rest of a tar, which nobody wants
};

la_ssize_t Append(archive *, void *data, const void *bytes, size_t size)
{
    auto *header = static_cast<Header *>(data);
    if (header->isWhole)
        return ARCHIVE_FATAL;
    header->text.append(static_cast<const char *>(bytes), size);
    return static_cast<la_ssize_t>(size);
}

// Names are UTF-8, whatever the environment says of this thread.
class NamesInUtf8
{
  public:
    NamesInUtf8() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr))
    {
        if (locale_ != nullptr)
            before_ = uselocale(locale_);
    }
    NamesInUtf8(const NamesInUtf8 &) = delete;
    NamesInUtf8 &operator=(const NamesInUtf8 &) = delete;
    ~NamesInUtf8()
    {
        if (locale_ == nullptr)
            return;
        uselocale(before_);
        freelocale(locale_);
    }

  private:
    locale_t locale_;
    locale_t before_ = nullptr;
};

} // namespace

std::string TarHeaderOf(const std::string &name, uint64_t size, std::time_t at)
{
    LoadLate(LateLibraries::OfArchives);
    const NamesInUtf8 names;
    Header header;
    const std::unique_ptr<archive, FreeArchive> tar(archive_write_new());
    const std::unique_ptr<archive_entry, FreeEntry> entry(archive_entry_new());
    if (tar == nullptr || entry == nullptr)
        throw std::bad_alloc();
    archive_entry_set_pathname(entry.get(), name.c_str());
    archive_entry_set_filetype(entry.get(), AE_IFREG);
    archive_entry_set_perm(entry.get(), kMode);
    archive_entry_set_size(entry.get(), static_cast<la_int64_t>(size));
    archive_entry_set_mtime(entry.get(), at, 0);
    // A name that is not UTF-8 is written as it is, which the library warns of.
    if (archive_write_set_format_pax_restricted(tar.get()) != ARCHIVE_OK ||
        archive_write_set_bytes_per_block(tar.get(), 0) != ARCHIVE_OK ||
        archive_write_open(tar.get(), &header, nullptr, Append, nullptr) != ARCHIVE_OK ||
        archive_write_header(tar.get(), entry.get()) < ARCHIVE_WARN)
        throw std::runtime_error(
            fmt::format("\"{}\" cannot be a member of a tar: {}", name, archive_error_string(tar.get())));
    header.isWhole = true;
    return header.text;
}

} // namespace vxhost
