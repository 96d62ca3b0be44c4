// Everything native crosses the border of the language through these two.
#pragma once

#include "math/BoundingBox.h"
#include "math/Vector.h"
#include "script/Objects.h"

namespace script
{
ObjectPtr ValueToObject(bool value);
ObjectPtr ValueToObject(int value);
ObjectPtr ValueToObject(unsigned long value);
ObjectPtr ValueToObject(float value);
ObjectPtr ValueToObject(double value);
ObjectPtr ValueToObject(long double value);
ObjectPtr ValueToObject(const util::String& value);
ObjectPtr ValueToObject(const char* value);
ObjectPtr ValueToObject(const math::Vec2& value);
ObjectPtr ValueToObject(const math::Vec3& value);
ObjectPtr ValueToObject(const math::Vec4& value);
ObjectPtr ValueToObject(const math::Vec2i& value);
/// A list of two vectors: lower corner, size.
ObjectPtr ValueToObject(const math::BoundingBox& value);
/// The object itself: functions pass unchanged.
ObjectPtr ValueToObject(const ObjectPtr& value);

/// T: util::String, int, unsigned long, float, double, long double, bool, ObjectList,
/// std::vector<unsigned long>, std::vector<math::Vec2>, math::Vec2, Vec3, Vec4, Vec2i,
/// math::BoundingBox, FunctionPtr.
///
/// An int passes for a floating value; nothing else passes for anything else. double is rounded to
/// single precision, as all native storage is.
/// @throws ScriptException  Not a string, Not an integer, Not a float, Not a bool, Not a list,
///     Not a vector, Not a bounding box
template<typename T>
T ObjectToValue(const ObjectPtr& object);

template<>
util::String ObjectToValue<util::String>(const ObjectPtr& object);
template<>
int ObjectToValue<int>(const ObjectPtr& object);
template<>
unsigned long ObjectToValue<unsigned long>(const ObjectPtr& object);
template<>
long double ObjectToValue<long double>(const ObjectPtr& object);
template<>
double ObjectToValue<double>(const ObjectPtr& object);
template<>
float ObjectToValue<float>(const ObjectPtr& object);
template<>
bool ObjectToValue<bool>(const ObjectPtr& object);
template<>
ObjectList ObjectToValue<ObjectList>(const ObjectPtr& object);
template<>
std::vector<unsigned long> ObjectToValue<std::vector<unsigned long>>(const ObjectPtr& object);
template<>
math::Vec2List ObjectToValue<math::Vec2List>(const ObjectPtr& object);
template<>
math::Vec2 ObjectToValue<math::Vec2>(const ObjectPtr& object);
template<>
math::Vec3 ObjectToValue<math::Vec3>(const ObjectPtr& object);
template<>
math::Vec4 ObjectToValue<math::Vec4>(const ObjectPtr& object);
template<>
math::Vec2i ObjectToValue<math::Vec2i>(const ObjectPtr& object);
template<>
math::BoundingBox ObjectToValue<math::BoundingBox>(const ObjectPtr& object);
template<>
FunctionPtr ObjectToValue<FunctionPtr>(const ObjectPtr& object);
}
