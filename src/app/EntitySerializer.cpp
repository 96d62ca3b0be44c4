#include "app/EntitySerializer.h"

#include "math/Vector.h"
#include "script/Attributes.h"
#include "script/Expressions.h"
#include "script/ValueConversions.h"
#include "util/Failures.h"

namespace app
{
namespace
{
// Room for the keys of one entity: growing step by step costs more than all the rest of a block.
const unsigned long UsualKeyCount = 23;

template<typename T>
script::ObjectPtr ToObject(const T& value)
{
    return script::ValueToObject(value);
}

template<typename T>
script::ObjectPtr ToObject(const std::vector<T>& values)
{
    script::ObjectList list;
    list.reserve(values.size());
    for (const T& value : values)
        list.push_back(script::ValueToObject(value));
    return QUIB_NEW script::List(std::move(list));
}
}

EntitySerializer::EntitySerializer(Defaults defaults)
    : m_values(UsualKeyCount)
    , m_defaults(defaults)
{
}

EntitySerializer::EntitySerializer(const script::Closure& closure)
    : m_values(UsualKeyCount)
{
    for (const script::VariablePtr& variable : closure.GetVariables())
        m_values[variable->GetName()] = variable->GetObject();
}

template<typename T>
T EntitySerializer::Get(const util::String& key) const
{
    const script::ObjectPtr* value = m_values.Find(key);
    if (!value)
        QUIB_THROW(BadDataException("Missing key \"" + key + "\""));
    try
    {
        return script::ObjectToValue<T>(*value);
    }
    catch (std::exception&)
    {
        // The text says what was wrong with the value, but not which value it was.
        Log(logging::LogWarning, "Bad value of key \"" + key + "\"");
        throw;
    }
}

template<typename T>
void EntitySerializer::Set(const util::String& key, const T& value)
{
    m_values[key] = ToObject(value);
}

void EntitySerializer::SerializeAttributes(const script::ClassObject& object)
{
    for (const script::VariablePtr& variable : object.GetVariables())
    {
        const auto* attrib = dynamic_cast<const script::AbstractAttrib*>(variable.get());
        if (!KeepsDefaults() && attrib && attrib->HasDefaultValue())
            continue;
        m_values[variable->GetName()] = variable->GetObject();
    }
}

void EntitySerializer::DeserializeAttributes(script::ClassObject& object) const
{
    for (const auto& value : m_values)
        if (script::Variable* variable = object.FindVariable(value.first))
            variable->SetObject(value.second);
}

script::ExpressionPtr EntitySerializer::ToFunctionDeclaration() const
{
    script::CodeBlockPtr body = QUIB_NEW script::CodeBlock;
    for (const auto& value : m_values)
    {
        const script::ExpressionPtr expression = value.second->ToExpression();
        if (!expression)
            continue;
        const script::IdentifierPtr target = QUIB_NEW script::Identifier(nullptr, value.first);
        body->Add(QUIB_NEW script::Assignment(target, expression));
    }
    return QUIB_NEW script::FunctionDeclaration({}, body);
}

script::ExpressionPtr EntitySerializer::ToFunctionCall(const util::String& name) const
{
    script::ExpressionPtr path;
    for (const util::String& part : util::Split(name, '.'))
        path = QUIB_NEW script::Identifier(path, part);
    script::BlockPtr arguments = QUIB_NEW script::Block;
    arguments->Add(ToFunctionDeclaration());
    return QUIB_NEW script::FunctionCall(path, arguments);
}

#define INSTANTIATE(...)                                                                           \
    template __VA_ARGS__ EntitySerializer::Get<__VA_ARGS__>(const util::String&) const;            \
    template void EntitySerializer::Set<__VA_ARGS__>(const util::String&, const __VA_ARGS__&)

INSTANTIATE(bool);
INSTANTIATE(int);
INSTANTIATE(unsigned long);
INSTANTIATE(float);
INSTANTIATE(util::String);
INSTANTIATE(math::Vec2);
INSTANTIATE(math::Vec3);
INSTANTIATE(math::Vec4);
INSTANTIATE(std::vector<math::Vec2>);
INSTANTIATE(std::vector<unsigned long>);

#undef INSTANTIATE
}
