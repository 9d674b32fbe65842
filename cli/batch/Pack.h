// Puts the outputs of a batch into one tar, with an index beside it by which a member is read without the rest: lines of JSON.
//
//   {"member":"a.png","offset":512,"size":183,"sha256":"...","document":"a.vx"}
//
// Both have ".part" in their names until the tar is whole. A member is in the tar before its line is in the index: what is
// behind the last member of the index is torn, and is cut off when a later run goes on. A member that is made again, and has
// changed, stands behind the old one, and the last of a name counts, as tar has it.
//
// Holds some sixty bytes for each member.
#pragma once

#include "cli/options/Digest.h"
#include "host/FileReading.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vxhost
{

class Pack
{
  public:
    // Begins the tar, or goes on with it, also with one that is whole. Throws EarlyEnd when nothing can be written there, or
    // another run writes to it, UsageError for an index that is none.
    Pack(const std::string &path, bool goesOn);

    // Returns the name of the member for a path, in one spelling; none: it leads out of the tar.
    static std::optional<std::string> MemberNameOf(const std::string &path);
    // Returns what the tar is called until it is whole, and the index of a tar of that name.
    static std::string PartNameOf(const std::string &path);
    static std::string IndexNameOf(const std::string &path);

    // Each adds a member, unless it is there with the same bytes. Returns why it could not, as one line for a person; empty: it
    // is there. The bytes are those of a file or of a text, with their digest.
    std::string Add(const std::string &name, int descriptor, const FileDigest &digest,
                    const std::string &document);
    std::string Add(const std::string &name, std::string_view text, const std::string &document);

    // Returns whether the member is there with the digest; where that is wanted, its bytes are read.
    bool Has(const std::string &name, const FileDigest &digest, bool isRead) const;
    bool Has(const std::string &name) const { return FindMember(name) != nullptr; }

    // Writes the end of the tar, and gives it its name. Throws EarlyEnd when it cannot.
    void Close();
    // Takes away what is not whole, as nobody can go on with it.
    void GiveUp();

  private:
    struct Member {
        uint64_t offset = 0; // of its first byte
        uint64_t size = 0;
        uint64_t digest = 0; // the first bytes
    };

    const Member *FindMember(const std::string &name) const;
    void FinishRenaming() const;
    bool OpenWhole();
    void OpenPart(bool goesOn);
    void OpenLocked(const std::string &file, int flags);
    void OpenIndex(const std::string &file, int flags);
    void ReadIndex();
    bool Reopen();
    template <class Write>
    std::string Append(const std::string &name, const FileDigest &digest, const std::string &document,
                       const Write &write);
    [[noreturn]] void Fail(int error, const char *advice = "choose another place") const;

    std::string path_, place_; // as given, and without links
    Descriptor tar_, index_;
    std::unordered_map<uint64_t, Member> members_; // by a digest of the name
    uint64_t end_ = 0;                             // of the last member, with its padding
    uint64_t indexEnd_ = 0;
    uint64_t begun_ = 0;   // where the members of this run begin
    bool isWhole_ = false; // it has its name, and nothing was added
};

} // namespace vxhost
