// Takes apart, as it arrives, what a worker sends through its pipe: progress, that memory ran out, an answer. Nothing of it is
// trusted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost
{

// A frame is this byte; behind kProgressFrame stands a percentage in a byte, behind kAnswerFrame the number of its bytes in
// eight, as the processor has it, and the bytes.
enum Frame : char { kProgressFrame = 'p', kMemoryFrame = 'm', kAnswerFrame = 'a' };

std::string AnswerFrameHead(uint64_t length);

class WorkerFrames
{
  public:
    explicit WorkerFrames(size_t mostAnswer, std::function<void(int percent)> onProgress = nullptr);

    // False when what came is nothing that a worker sends. Keeps no more than the longest answer and what was added last.
    bool Add(std::string_view bytes);

    bool IsOutOfMemory() const { return isOutOfMemory_; }
    std::optional<std::string> TakeAnswer() { return std::move(answer_); } // the last that was whole

  private:
    size_t mostAnswer_;
    std::function<void(int)> onProgress_;
    std::string bytes_; // what has come of a frame that is not whole
    std::optional<std::string> answer_;
    bool isOutOfMemory_ = false;
};

} // namespace vxhost
