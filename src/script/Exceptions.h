// What goes wrong in a script: in its text, in its grammar, while it runs.
#pragma once

#include "util/Failures.h"

namespace script
{
/// The text cannot be cut into tokens.
class TokenException : public BadDataException
{
public:
    using BadDataException::BadDataException;
};

/// The tokens make no statement.
class ParseException : public BadDataException
{
public:
    using BadDataException::BadDataException;
};

/// A statement failed while it ran.
class ScriptException : public BadDataException
{
public:
    using BadDataException::BadDataException;
};
}
