// Numbers and texts as flat bytes, for a reader that does not trust their writer: every length has its bound, and what was
// read is whole, or refused.
//
// Writer and reader have the same procedures, so that one description of a record serves both. The bytes stay on one
// machine: numbers are as its processor has them.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace vxhost
{

// A list has no more than this.
struct ListBounds {
    size_t bytes;
    size_t items = std::numeric_limits<uint32_t>::max();
};

class FlatWriter
{
  public:
    template <typename Number>
    void Add(const Number &number)
    {
        static_assert(std::is_arithmetic_v<Number>);
        bytes_.append(reinterpret_cast<const char *>(&number), sizeof number);
    }

    template <typename Enum>
    void AddEnum(const Enum &value, Enum /*last*/)
    {
        Add(static_cast<uint8_t>(value));
    }

    // A text that is longer than most bytes is cut.
    void AddText(const std::string &text, size_t most)
    {
        const auto length = static_cast<uint32_t>(std::min(text.size(), most));
        Add(length);
        bytes_.append(text, 0, length);
    }

    // Adds the items within the bounds, and counts the others beside those that were omitted before.
    template <typename Item, typename DescribeItem>
    void AddList(std::vector<Item> &items, const ListBounds &bounds, uint32_t *omitted,
                 const DescribeItem &describeItem)
    {
        FlatWriter listed;
        uint32_t count = 0;
        for (Item &item : items) {
            FlatWriter one;
            describeItem(one, item);
            if (count == bounds.items || listed.bytes_.size() + one.bytes_.size() > bounds.bytes)
                break;
            listed.bytes_ += one.bytes_;
            ++count;
        }
        *omitted += static_cast<uint32_t>(items.size()) - count;
        Add(count);
        Add(*omitted);
        bytes_ += listed.bytes_;
    }

    std::string Take() { return std::move(bytes_); }

  private:
    std::string bytes_;
};

class FlatReader
{
  public:
    explicit FlatReader(std::string_view bytes) : rest_(bytes) {}

    template <typename Number>
    void Add(Number &number)
    {
        static_assert(std::is_arithmetic_v<Number>);
        number = 0;
        if (rest_.size() < sizeof number)
            return Refuse();
        if constexpr (std::is_same_v<Number, bool>) {
            if (rest_[0] != 0 && rest_[0] != 1)
                return Refuse();
            number = rest_[0] == 1;
        } else {
            std::memcpy(&number, rest_.data(), sizeof number);
            if constexpr (std::is_floating_point_v<Number>) {
                if (!std::isfinite(number))
                    return Refuse();
            }
        }
        rest_.remove_prefix(sizeof number);
    }

    template <typename Enum>
    void AddEnum(Enum &value, Enum last)
    {
        uint8_t number = 0;
        Add(number);
        if (number > static_cast<uint8_t>(last))
            return Refuse();
        value = static_cast<Enum>(number);
    }

    void AddText(std::string &text, size_t most)
    {
        uint32_t length = 0;
        Add(length);
        if (length > most || length > rest_.size())
            return Refuse();
        text = rest_.substr(0, length);
        rest_.remove_prefix(length);
    }

    template <typename Item, typename DescribeItem>
    void AddList(std::vector<Item> &items, const ListBounds &bounds, uint32_t *omitted,
                 const DescribeItem &describeItem)
    {
        uint32_t count = 0;
        Add(count);
        Add(*omitted);
        if (count > bounds.items)
            return Refuse();
        const size_t end = rest_.size() - std::min(rest_.size(), bounds.bytes);
        // An item takes a byte at least, so that a count alone makes nothing.
        for (uint32_t i = 0; i < count && !isRefused_; ++i) {
            const size_t before = rest_.size();
            describeItem(*this, items.emplace_back());
            if (rest_.size() == before || rest_.size() < end)
                return Refuse();
        }
    }

    // Whether all of it was what it should be, to the last byte.
    bool IsWhole() const { return !isRefused_ && rest_.empty(); }

  private:
    void Refuse()
    {
        isRefused_ = true;
        rest_ = {};
    }

    std::string_view rest_;
    bool isRefused_ = false;
};

} // namespace vxhost
