#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace platform {

/// One value of a log line: a number or a text.
using LogValue = std::variant<std::int64_t, std::uint64_t, std::string_view>;

/// Writes one line to the installed log sink; `NSLog` below is the checked way to it.
void writeLogLine(std::string_view format, std::span<const LogValue> values);

/// Never defined: a format that reaches this call while it is checked does not compile.
void logFormatDoesNotFitItsValues();

/// Returns whether a value of `Type` fits the conversion `%` + `length` + `conversion`:
/// `d` and `x` take 32 bits, `ld` 64 bits, `@` a text.
template <class Type>
constexpr bool fitsConversion(bool isLong, char conversion) {
    if constexpr (std::is_convertible_v<Type, std::string_view>)
        return conversion == '@' && !isLong;
    else if (conversion == 'x')
        return std::unsigned_integral<Type> && sizeof(Type) == 4 && !isLong;
    else
        return std::signed_integral<Type> && conversion == 'd' && sizeof(Type) == (isLong ? 8 : 4);
}

/// A `printf` format (with `%@` for texts) that was checked against its values by the compiler.
template <class... Values>
class LogFormat {
  public:
    // Implicit, so that a call of NSLog reads like a call of printf.
    consteval LogFormat(const char* text) : text_(text) {  // NOLINT(google-explicit-constructor)
        std::string_view rest = text_;
        const bool fits = (... && takesNext<Values>(rest));
        if (!fits || rest.find('%') != std::string_view::npos)
            logFormatDoesNotFitItsValues();
    }

    std::string_view text() const { return text_; }

  private:
    template <class Value>
    static constexpr bool takesNext(std::string_view& rest) {
        const auto percent = rest.find('%');
        if (percent == std::string_view::npos)
            return false;
        rest.remove_prefix(percent + 1);
        rest.remove_prefix(std::min(rest.find_first_not_of("0123456789"), rest.size()));
        const bool isLong = rest.starts_with('l');
        rest.remove_prefix(isLong ? 1 : 0);
        if (rest.empty() || !fitsConversion<Value>(isLong, rest.front()))
            return false;
        rest.remove_prefix(1);
        return true;
    }

    std::string_view text_;
};

template <class Value>
LogValue logValue(const Value& value) {
    if constexpr (std::is_convertible_v<Value, std::string_view>)
        return std::string_view(value);
    else if constexpr (std::is_unsigned_v<Value>)
        return std::uint64_t{value};
    else
        return std::int64_t{value};
}

}  // namespace platform

/// Writes one line to the system log. The format is `printf`'s, with `%@` for a text, and is
/// checked when it is compiled. A line break at the format's end is dropped; other control
/// characters in it become spaces, so that an event is always one line.
template <class... Values>
void NSLog(platform::LogFormat<std::type_identity_t<Values>...> format, const Values&... values) {
    const std::initializer_list<platform::LogValue> list{platform::logValue(values)...};
    platform::writeLogLine(format.text(), {list.begin(), list.size()});
}
