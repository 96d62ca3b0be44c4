#include "util/String.h"

#include "util/Failures.h"

#include <boost/lexical_cast.hpp>

#include <charconv>
#include <locale>
#include <sstream>

namespace util
{
namespace
{
// The C locale's letters only: bytes from 0x80 on are left alone.
char LowerChar(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
}
char UpperChar(char c)
{
    return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}

bool EqualIgnoringCase(const char* a, const char* b, size_t n)
{
    for (size_t i = 0; i < n; ++i)
        if (LowerChar(a[i]) != LowerChar(b[i]))
            return false;
    return true;
}

template<typename T>
String Stream(T value)
{
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << value;
    return out.str();
}

// The plain forms of numbers, read exactly and without a stream: a scene has a hundred thousand of them.
// False, with no verdict, for all other texts.
bool ReadPlain(const String& text, int& value)
{
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end;
}

template<typename T>
bool ReadPlainFloat(const String& text, T& value)
{
    // No "inf", no "nan" and what else the library takes: a digit first, and last.
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const size_t first = !text.empty() && text[0] == '-' ? 1 : 0;
    if (text.size() <= first || !isDigit(text[first]) || !isDigit(text.back()))
        return false;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end;
}

bool ReadPlain(const String& text, float& value)
{
    return ReadPlainFloat(text, value);
}
bool ReadPlain(const String& text, double& value)
{
    return ReadPlainFloat(text, value);
}

template<typename T>
bool ReadPlain(const String&, T&)
{
    return false;
}

template<typename T>
T Cast(const String& text)
{
    T value;
    if (ReadPlain(text, value))
        return value;
    if (!boost::conversion::try_lexical_convert(text, value))
        QUIB_THROW(BadDataException("Bad lexical cast: \"" + Shorten(text) + "\""));
    return value;
}
}

String ToLower(const String& text)
{
    String out = text;
    for (char& c : out)
        c = LowerChar(c);
    return out;
}

String ToUpper(const String& text)
{
    String out = text;
    for (char& c : out)
        c = UpperChar(c);
    return out;
}

std::vector<String> Split(const String& text, char separator)
{
    std::vector<String> parts;
    size_t begin = 0;
    for (;;)
    {
        const size_t end = text.find(separator, begin);
        if (end == String::npos)
            break;
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    parts.push_back(text.substr(begin));
    return parts;
}

String Join(const std::vector<String>& parts, const String& separator)
{
    String out;
    for (size_t i = 0; i < parts.size(); ++i)
    {
        if (i)
            out += separator;
        out += parts[i];
    }
    return out;
}

bool starts_with(const String& text, const String& start)
{
    return text.compare(0, start.size(), start) == 0;
}

bool ends_with(const String& text, const String& end)
{
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool istarts_with(const String& text, const String& start)
{
    return text.size() >= start.size() &&
           EqualIgnoringCase(text.data(), start.data(), start.size());
}

bool iends_with(const String& text, const String& end)
{
    return text.size() >= end.size() &&
           EqualIgnoringCase(text.data() + (text.size() - end.size()), end.data(), end.size());
}

bool iequals(const String& a, const String& b)
{
    return a.size() == b.size() && EqualIgnoringCase(a.data(), b.data(), a.size());
}

String Shorten(const String& text, size_t length)
{
    return text.size() <= length ? text : text.substr(0, length) + "...";
}

String Plural(size_t n)
{
    return n == 1 ? "" : "s";
}

String Latin1ToUTF8(const String& text)
{
    String utf8;
    utf8.reserve(text.size());
    for (const char c : text)
    {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x80)
            utf8 += c;
        else
        {
            utf8 += static_cast<char>(0xC0 | code >> 6);
            utf8 += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return utf8;
}

bool UTF8ToLatin1(const String& text, String& latin1)
{
    String result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i)
    {
        const auto first = static_cast<unsigned char>(text[i]);
        if (first < 0x80)
        {
            result += text[i];
            continue;
        }
        // All of Latin-1 has two bytes, the first of which is C2 or C3.
        const auto second = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        if ((first != 0xC2 && first != 0xC3) || (second & 0xC0) != 0x80)
            return false;
        result += static_cast<char>(first << 6 | (second & 0x3F));
        ++i;
    }
    latin1 = result;
    return true;
}

String ToString(bool value)
{
    return value ? "true" : "false";
}
String ToString(int value)
{
    return std::to_string(value);
}
String ToString(unsigned value)
{
    return std::to_string(value);
}
String ToString(long value)
{
    return std::to_string(value);
}
String ToString(unsigned long value)
{
    return std::to_string(value);
}
String ToString(float value)
{
    return Stream(value);
}
String ToString(double value)
{
    return Stream(value);
}
String ToString(long double value)
{
    return Stream(value);
}

template<>
bool FromString<bool>(const String& text)
{
    if (text == "true")
        return true;
    if (text == "false")
        return false;
    QUIB_THROW(BadDataException("Bad lexical cast: \"" + Shorten(text) + "\""));
}
template<>
String FromString<String>(const String& text)
{
    return text;
}
template<>
int FromString<int>(const String& text)
{
    return Cast<int>(text);
}
template<>
unsigned FromString<unsigned>(const String& text)
{
    return Cast<unsigned>(text);
}
template<>
long FromString<long>(const String& text)
{
    return Cast<long>(text);
}
template<>
unsigned long FromString<unsigned long>(const String& text)
{
    return Cast<unsigned long>(text);
}
template<>
float FromString<float>(const String& text)
{
    return Cast<float>(text);
}
template<>
double FromString<double>(const String& text)
{
    return Cast<double>(text);
}
}
