// The byte string of the program and what is done with it. Text is Latin-1. Numbers are written in
// the classic locale, and read in it too: the program sets no other.
#pragma once

#include <string>
#include <vector>

namespace util
{
using String = std::string;

// Case is that of the letters a to z. All other bytes, the letters of Latin-1 above them included, are
// equal to themselves only.
String ToLower(const String& text);
String ToUpper(const String& text);
/// Empty parts between separators are kept, a trailing one included: "a,,b," gives a, "", b, "".
std::vector<String> Split(const String& text, char separator);
String Join(const std::vector<String>& parts, const String& separator);
bool starts_with(const String& text, const String& start);
bool ends_with(const String& text, const String& end);
/// These three ignore case.
bool istarts_with(const String& text, const String& start);
bool iends_with(const String& text, const String& end);
bool iequals(const String& a, const String& b);
/// The text, of which no more than that many characters are kept, and then "...", when it is longer.
String Shorten(const String& text, size_t length = 1000);
/// "" for 1, else "s".
String Plural(size_t n);
/// For the world outside, where text is UTF-8.
String Latin1ToUTF8(const String& text);
/// @return false, with latin1 left alone, for what is no UTF-8 or has characters beyond Latin-1
bool UTF8ToLatin1(const String& text, String& latin1);

/// bool as "true" and "false", floating values with 6 significant digits, all in the classic locale.
String ToString(bool value);
String ToString(int value);
String ToString(unsigned value);
String ToString(long value);
String ToString(unsigned long value);
String ToString(float value);
String ToString(double value);
String ToString(long double value);
inline String ToString(const String& value)
{
    return value;
}
inline String ToString(const char* value)
{
    return value;
}

/// T: bool, int, unsigned, long, unsigned long, float, double, String. Takes "+inf" and "-inf".
/// @throws BadDataException  Bad lexical cast: "value"
template<typename T>
T FromString(const String& text);
}
