// Values of a PDF, as the text that stands for them in a file.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

namespace vxhost::pdf
{

// Names an object of the file from within others.
struct Reference {
    uint32_t number = 0;
    friend bool operator==(const Reference &, const Reference &) = default;
};

std::string ValueOf(Reference reference); // "12 0 R"
std::string ValueOf(double number);
std::string
NameValue(std::string_view name); // "/Deep#20Blue" for any bytes but zeros, which no name can have
std::string TextValue(std::string_view utf8);      // a string that is read by people
std::string ArrayValue(std::string_view elements); // with white space between those that need it
std::string ArrayValue(std::initializer_list<double> numbers);
std::string ArrayValue(std::span<const Reference> references);

class Dictionary
{
  public:
    // The key is a name, without its "/". No key may come twice.
    Dictionary &Add(std::string_view key, std::string_view value);
    Dictionary &Add(std::string_view key, Reference value) { return Add(key, ValueOf(value)); }
    Dictionary &Add(std::string_view key, double value) { return Add(key, ValueOf(value)); }

    bool IsEmpty() const { return entries_.empty(); }
    std::string Value() const { return "<<" + entries_ + ">>"; }

  private:
    std::string entries_;
};

} // namespace vxhost::pdf
