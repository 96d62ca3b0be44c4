// The bag of keyed values that travels between an entity and a block of script.
#pragma once

#include "script/ClassObject.h"
#include "util/HashMap.h"
#include "util/String.h"

namespace app
{
class EntitySerializer
{
public:
    // What becomes of attributes at their default. A file leaves them to whoever reads it. A snapshot
    // and a clone take everything, and unbound buttons and controllers as "": reading "" unbinds.
    enum class Defaults
    {
        Skip,
        Keep
    };

    /// Empty, for writing.
    explicit EntitySerializer(Defaults defaults = Defaults::Skip);
    /// The closure's variables, for reading.
    explicit EntitySerializer(const script::Closure& closure);

    bool KeepsDefaults() const { return m_defaults == Defaults::Keep; }

    bool Has(const util::String& key) const { return m_values.Find(key) != nullptr; }

    /// T: bool, int, unsigned long, float, util::String, Vec2, Vec3, Vec4, vector of Vec2, vector of
    /// unsigned long. A value of the wrong kind is logged with its key.
    /// @throws BadDataException  when the key is missing or the value is of another kind
    template<typename T>
    T Get(const util::String& key) const;

    template<typename T>
    void Set(const util::String& key, const T& value);

    using Values = util::HashMap<util::String, script::ObjectPtr>;
    /// In hash order.
    const Values& GetValues() const { return m_values; }
    /// Set, for a value that has left a bag before.
    void SetObject(const util::String& key, const script::ObjectPtr& value)
    {
        m_values[key] = value;
    }

    /// Takes over each variable of the object, but for attributes at their default unless these are
    /// kept.
    void SerializeAttributes(const script::ClassObject& object);
    /// Gives each variable of the object whose name is a key its value.
    void DeserializeAttributes(script::ClassObject& object) const;

    /// {key = value; ...}, in hash order: the reader does not depend on it.
    script::ExpressionPtr ToFunctionDeclaration() const;
    /// name({...})
    /// @param name  may be dotted
    script::ExpressionPtr ToFunctionCall(const util::String& name) const;

private:
    Values m_values;
    Defaults m_defaults = Defaults::Skip;
};
}
