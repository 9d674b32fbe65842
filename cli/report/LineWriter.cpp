#include "cli/report/LineWriter.h"

#include "jobs/OutputFile.h"

#include <cerrno>
#include <unistd.h>

namespace vxhost
{

namespace
{

constexpr size_t kWriteSize = size_t{1} << 16;

} // namespace

void LineWriter::Add(std::string_view text)
{
    buffer_ += text;
    if (buffer_.size() >= kWriteSize)
        Flush();
}

Failure LineWriter::Finish()
{
    Flush();
    return failure_;
}

void LineWriter::Flush()
{
    if (!failure_ && !WriteAll(STDOUT_FILENO, buffer_))
        failure_ = {FailureKind::CannotWrite, SystemText(errno), errno};
    buffer_.clear();
}

} // namespace vxhost
