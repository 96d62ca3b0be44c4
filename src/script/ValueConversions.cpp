#include "script/ValueConversions.h"

#include "script/Recursion.h"

namespace script
{
namespace
{
template<typename V, int N>
ObjectPtr VecToObject(const V& v)
{
    ObjectList elements;
    elements.reserve(N);
    for (int i = 0; i < N; ++i)
        elements.push_back(ValueToObject(v[i]));
    return QUIB_NEW List(std::move(elements));
}

ObjectPtr MakeList(ObjectPtr a, ObjectPtr b)
{
    return QUIB_NEW List(ObjectList{std::move(a), std::move(b)});
}

template<typename T>
const T& ValueOf(const ObjectPtr& object, const char* message)
{
    const auto* value = As<Value<T>>(object);
    if (!value)
        QUIB_THROW(ScriptException(message));
    return value->GetValue();
}

const ObjectList& ElementsOf(const ObjectPtr& object, const char* message)
{
    const List* list = As<List>(object);
    if (!list)
        QUIB_THROW(ScriptException(message));
    return list->GetElements();
}

template<typename T>
void ObjectToValue2(const ObjectPtr& object, T& value)
{
    value = ObjectToValue<T>(object);
}

template<typename V, int N>
V ObjectToVec(const ObjectPtr& object)
{
    const ObjectList& elements = ElementsOf(object, "Not a vector");
    if (elements.size() != N)
        QUIB_THROW(ScriptException("Not a vector"));
    V v;
    for (int i = 0; i < N; ++i)
        ObjectToValue2(elements[static_cast<size_t>(i)], v[i]);
    return v;
}

template<typename T>
std::vector<T> ObjectToVector(const ObjectPtr& object)
{
    const ObjectList& elements = ElementsOf(object, "Not a list");
    Charge(ElementCost * static_cast<int64_t>(elements.size()));
    std::vector<T> values;
    values.reserve(elements.size());
    for (const ObjectPtr& element : elements)
        values.push_back(ObjectToValue<T>(element));
    return values;
}
}

ObjectPtr ValueToObject(bool value)
{
    return QUIB_NEW Value<bool>(value);
}

ObjectPtr ValueToObject(int value)
{
    return QUIB_NEW Value<Int>(value);
}

ObjectPtr ValueToObject(unsigned long value)
{
    return QUIB_NEW Value<Int>(static_cast<Int>(value));
}

ObjectPtr ValueToObject(float value)
{
    return QUIB_NEW Value<Float>(value);
}

ObjectPtr ValueToObject(double value)
{
    return QUIB_NEW Value<Float>(value);
}

ObjectPtr ValueToObject(long double value)
{
    return QUIB_NEW Value<Float>(static_cast<Float>(value));
}

ObjectPtr ValueToObject(const util::String& value)
{
    return QUIB_NEW Value<util::String>(value);
}

ObjectPtr ValueToObject(const char* value)
{
    return QUIB_NEW Value<util::String>(value);
}

ObjectPtr ValueToObject(const math::Vec2& value)
{
    return VecToObject<math::Vec2, 2>(value);
}

ObjectPtr ValueToObject(const math::Vec3& value)
{
    return VecToObject<math::Vec3, 3>(value);
}

ObjectPtr ValueToObject(const math::Vec4& value)
{
    return VecToObject<math::Vec4, 4>(value);
}

ObjectPtr ValueToObject(const math::Vec2i& value)
{
    return VecToObject<math::Vec2i, 2>(value);
}

ObjectPtr ValueToObject(const math::BoundingBox& value)
{
    return MakeList(ValueToObject(value.GetMin()), ValueToObject(value.GetSize()));
}

ObjectPtr ValueToObject(const ObjectPtr& value)
{
    return value;
}

template<>
util::String ObjectToValue<util::String>(const ObjectPtr& object)
{
    return ValueOf<util::String>(object, "Not a string");
}

template<>
int ObjectToValue<int>(const ObjectPtr& object)
{
    return ValueOf<Int>(object, "Not an integer");
}

template<>
unsigned long ObjectToValue<unsigned long>(const ObjectPtr& object)
{
    return static_cast<unsigned long>(ObjectToValue<int>(object));
}

template<>
long double ObjectToValue<long double>(const ObjectPtr& object)
{
    if (const auto* value = As<Value<Float>>(object))
        return value->GetValue();
    return ValueOf<Int>(object, "Not a float");
}

template<>
double ObjectToValue<double>(const ObjectPtr& object)
{
    // Deliberate: single precision is what all native storage has.
    return ObjectToValue<float>(object);
}

template<>
float ObjectToValue<float>(const ObjectPtr& object)
{
    if (const auto* value = As<Value<Float>>(object))
        return static_cast<float>(value->GetValue());
    return static_cast<float>(ObjectToValue<long double>(object));
}

template<>
bool ObjectToValue<bool>(const ObjectPtr& object)
{
    return ValueOf<bool>(object, "Not a bool");
}

template<>
ObjectList ObjectToValue<ObjectList>(const ObjectPtr& object)
{
    return ElementsOf(object, "Not a list");
}

template<>
std::vector<unsigned long> ObjectToValue<std::vector<unsigned long>>(const ObjectPtr& object)
{
    return ObjectToVector<unsigned long>(object);
}

template<>
math::Vec2List ObjectToValue<math::Vec2List>(const ObjectPtr& object)
{
    return ObjectToVector<math::Vec2>(object);
}

template<>
math::Vec2 ObjectToValue<math::Vec2>(const ObjectPtr& object)
{
    return ObjectToVec<math::Vec2, 2>(object);
}

template<>
math::Vec3 ObjectToValue<math::Vec3>(const ObjectPtr& object)
{
    return ObjectToVec<math::Vec3, 3>(object);
}

template<>
math::Vec4 ObjectToValue<math::Vec4>(const ObjectPtr& object)
{
    return ObjectToVec<math::Vec4, 4>(object);
}

template<>
math::Vec2i ObjectToValue<math::Vec2i>(const ObjectPtr& object)
{
    return ObjectToVec<math::Vec2i, 2>(object);
}

template<>
math::BoundingBox ObjectToValue<math::BoundingBox>(const ObjectPtr& object)
{
    const ObjectList& corners = ElementsOf(object, "Not a bounding box");
    if (corners.size() != 2)
        QUIB_THROW(ScriptException("Not a bounding box"));
    const math::Vec2 lower = ObjectToValue<math::Vec2>(corners[0]);
    return math::BoundingBox(lower, lower + ObjectToValue<math::Vec2>(corners[1]));
}

template<>
FunctionPtr ObjectToValue<FunctionPtr>(const ObjectPtr& object)
{
    const FunctionPtr ret = util::DynamicCast<Function>(object);
    DATA_ASSERT(ret);
    return ret;
}
}
