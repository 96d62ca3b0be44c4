// The whole standard library of the language: arithmetic over values and lists, in the closure "math",
// and the infixes that point at it.
#pragma once

#include "script/Objects.h"

namespace script
{
class Parser;

extern const char* const IntrinsicsName;

/// Takes the parser by reference: its singleton is still being built.
void AddIntrinsics(Parser& parser);

// Lists are vectors: element by element with a list of the same size.
// @throws ScriptException  for operands that do not go together

/// A string on either side takes the other side's text.
ObjectPtr Add(const ObjectPtr& a, const ObjectPtr& b);
ObjectPtr Subtract(const ObjectPtr& a, const ObjectPtr& b);
/// A list with a number: each element by the number.
ObjectPtr Multiply(const ObjectPtr& a, const ObjectPtr& b);
ObjectPtr Divide(const ObjectPtr& a, const ObjectPtr& b);
}
