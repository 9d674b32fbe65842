// Read before every source: what the C++ library of emscripten lacks of C++20, as far as our sources use it.
#pragma once

#include <version>

#ifndef __cpp_lib_ranges
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace std::ranges // NOLINT: the names that the sources use
{

template <class Range, class Test, class Projection = std::identity>
constexpr auto find_if(Range &&range, Test test, Projection projection = {})
{
    return std::find_if(std::begin(range), std::end(range),
                        [&](auto &&item) { return std::invoke(test, std::invoke(projection, item)); });
}

template <class Range, class Value, class Projection = std::identity>
constexpr auto find(Range &&range, const Value &value, Projection projection = {})
{
    return std::find_if(std::begin(range), std::end(range),
                        [&](auto &&item) { return std::invoke(projection, item) == value; });
}

template <class Range, class Test, class Projection = std::identity>
constexpr bool any_of(Range &&range, Test test, Projection projection = {})
{
    return ranges::find_if(range, test, projection) != std::end(range);
}

template <class Range, class Test, class Projection = std::identity>
constexpr bool none_of(Range &&range, Test test, Projection projection = {})
{
    return !ranges::any_of(range, test, projection);
}

template <class Range, class Test, class Projection = std::identity>
constexpr bool all_of(Range &&range, Test test, Projection projection = {})
{
    return ranges::none_of(range, std::not_fn(std::ref(test)), projection);
}

template <class Range, class Test, class Projection = std::identity>
constexpr auto count_if(Range &&range, Test test, Projection projection = {})
{
    return std::count_if(std::begin(range), std::end(range),
                         [&](auto &&item) { return std::invoke(test, std::invoke(projection, item)); });
}

template <class Range, class Value, class Projection = std::identity>
constexpr auto count(Range &&range, const Value &value, Projection projection = {})
{
    return std::count_if(std::begin(range), std::end(range),
                         [&](auto &&item) { return std::invoke(projection, item) == value; });
}

template <class One, class Other, class Test = std::equal_to<>>
constexpr bool equal(One &&one, Other &&other, Test test = {})
{
    return std::equal(std::begin(one), std::end(one), std::begin(other), std::end(other), std::ref(test));
}

template <class Order, class Projection>
constexpr auto Projected(Order &order, Projection &projection)
{
    return [&](auto &&one, auto &&other) {
        return std::invoke(order, std::invoke(projection, one), std::invoke(projection, other));
    };
}

template <class Range, class Order = std::less<>, class Projection = std::identity>
constexpr void sort(Range &&range, Order order = {}, Projection projection = {})
{
    std::sort(std::begin(range), std::end(range), Projected(order, projection));
}

template <class Range, class Order = std::less<>, class Projection = std::identity>
constexpr void stable_sort(Range &&range, Order order = {}, Projection projection = {})
{
    std::stable_sort(std::begin(range), std::end(range), Projected(order, projection));
}

template <class Range, class Order = std::less<>, class Projection = std::identity>
constexpr auto max_element(Range &&range, Order order = {}, Projection projection = {})
{
    return std::max_element(std::begin(range), std::end(range), Projected(order, projection));
}

template <class Item>
struct min_max_result {
    Item min, max;
};

template <class Range>
constexpr auto minmax(Range &&range)
{
    const auto [least, most] = std::minmax_element(std::begin(range), std::end(range));
    return min_max_result<std::remove_cvref_t<decltype(*least)>>{*least, *most};
}

template <class Range, class Value, class Order = std::less<>, class Projection = std::identity>
constexpr auto lower_bound(Range &&range, const Value &value, Order order = {}, Projection projection = {})
{
    return std::lower_bound(std::begin(range), std::end(range), value, [&](auto &&item, const Value &bound) {
        return std::invoke(order, std::invoke(projection, item), bound);
    });
}

template <class Range, class Value, class Order = std::less<>, class Projection = std::identity>
constexpr auto upper_bound(Range &&range, const Value &value, Order order = {}, Projection projection = {})
{
    return std::upper_bound(std::begin(range), std::end(range), value, [&](const Value &bound, auto &&item) {
        return std::invoke(order, bound, std::invoke(projection, item));
    });
}

template <class Range, class To>
constexpr To copy(Range &&range, To to)
{
    return std::copy(std::begin(range), std::end(range), to);
}

template <class Range, class To, class Test>
constexpr To remove_copy_if(Range &&range, To to, Test test)
{
    return std::remove_copy_if(std::begin(range), std::end(range), to, test);
}

template <class Range, class Value>
constexpr void fill(Range &&range, const Value &value)
{
    std::fill(std::begin(range), std::end(range), value);
}

template <class Range, class Value>
constexpr void replace(Range &&range, const Value &old, const Value &value)
{
    std::replace(std::begin(range), std::end(range), old, value);
}

template <class Range>
constexpr void reverse(Range &&range)
{
    std::reverse(std::begin(range), std::end(range));
}

template <class Range, class To, class Change>
constexpr To transform(Range &&range, To to, Change change)
{
    return std::transform(std::begin(range), std::end(range), to, std::ref(change));
}

} // namespace std::ranges

namespace std // NOLINT: as above
{

template <class Item>
auto make_unique_for_overwrite(size_t count)
{
    return unique_ptr<Item>(new remove_extent_t<Item>[count]);
}

// No blanks, plus signs and hexadecimal digits, as from_chars has it.
inline from_chars_result from_chars(const char *first, const char *last, double &value,
                                    chars_format format = chars_format::general)
{
    const string_view marks = format == chars_format::fixed ? "xXeE" : "xX";
    const string text(first, find_first_of(first, last, marks.begin(), marks.end()));
    char *end = nullptr;
    const double read = strtod(text.c_str(), &end);
    if (end == text.c_str() || *first == '+' || *first == ' ' || (*first >= '\t' && *first <= '\r'))
        return {first, errc::invalid_argument};
    const char *stop = first + (end - text.c_str());
    if (read - read != 0 && text.find_first_of("0123456789") != string::npos)
        return {stop, errc::result_out_of_range};
    value = read;
    return {stop, errc()};
}

inline to_chars_result to_chars(char *first, char *last, double value, chars_format, int digits)
{
    const int length = snprintf(first, static_cast<size_t>(last - first), "%.*f", digits, value);
    if (length < 0 || length >= last - first)
        return {last, errc::value_too_large};
    return {first + length, errc()};
}

} // namespace std
#endif
