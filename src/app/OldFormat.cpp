// Files from before scenes were programs: named blocks that each tell their type, and are called here one
// by one. Nothing else in them runs.

#include "app/EntitySerializer.h"
#include "app/FileInfo.h"
#include "app/Serializer.h"
#include "script/Parser.h"
#include "script/Recursion.h"

#include <algorithm>
#include <cmath>

using math::Vec2;

namespace app
{
namespace
{
// What an entity says it is.
util::String OldType(const EntitySerializer& serializer)
{
    return serializer.Has("type") ? serializer.Get<util::String>("type") : "";
}

bool IsOneOf(const util::String& text, std::initializer_list<const char*> words)
{
    return std::find(words.begin(), words.end(), text) != words.end();
}

bool IsOnBox(const Vec2& p, const Vec2& half)
{
    const float tolerance = 1e-7f;
    const float dx = std::fabs(p.x) - half.x, dy = std::fabs(p.y) - half.y;
    return (std::fabs(dx) <= tolerance && dy <= tolerance) ||
           (std::fabs(dy) <= tolerance && dx <= tolerance);
}

/// Boxes once were polygons with rounded corners. True when this is one, and then its "size" is set.
bool PolygonAsBox(EntitySerializer& serializer)
{
    const math::Vec2List vecs = serializer.Get<math::Vec2List>("vecs");
    if (vecs.size() != 12 && vecs.size() != 16)
        return false;
    const Vec2 half(std::fabs(vecs.back().x), std::fabs(vecs.back().y));
    for (const Vec2& p : vecs)
        if (!IsOnBox(p, half))
            return false;
    serializer.Set("size", half * 2.0f);
    return true;
}

// In the order in which they are made: joints name geometries and groups name entities, which must be
// there by then.
struct OldBlocks
{
    std::vector<EntitySerializer> geoms, joints, others;
};

/// Calls the blocks. What is none is logged.
OldBlocks ReadOldBlocks(const script::CodeBlock& program)
{
    // Formulas look names up by way of it for as long as they live, and keep alive only the closure of
    // their block. Nothing is ever assigned in it.
    static const auto* const s_closure = new script::ClosurePtr(QUIB_NEW script::Closure(
        "Deserialize_closure", script::Parser::GetInstancePtr()->GetRootClosure()));
    // One for all of them.
    const script::Allowance reading(script::MaxRunCost);
    OldBlocks blocks;
    for (const script::ExpressionPtr& statement : program.GetElements())
    {
        try
        {
            const script::Assignment* assignment = statement->AsAssignment();
            if (!assignment)
            {
                Log(logging::LogWarning,
                    "Unknown garbage found in scene file: " + script::PrintShortened(*statement));
                continue;
            }
            const script::Identifier& target = *assignment->GetTarget();
            const bool isDotted = bool(target.GetOwnerExpression());
            const script::ExpressionPtr& value = assignment->GetValue();
            if (!isDotted && dynamic_cast<const script::FunctionDeclaration*>(value.get()))
            {
                const auto function =
                    util::DynamicCast<script::Function>(value->Evaluate(*s_closure));
                const EntitySerializer serializer = CallBlock(*function);
                const util::String type = OldType(serializer);
                (IsOneOf(type, {"polygon", "circle", "plane", "box"})    ? blocks.geoms
                 : IsOneOf(type, {"fixjoint", "hinge", "spring", "pen"}) ? blocks.joints
                                                                         : blocks.others)
                    .push_back(serializer);
            }
            else if (!isDotted && target.GetName() == "version")
            {
                // The value may be an assignment itself.
                const script::ClosurePtr ownClosure =
                    QUIB_NEW script::Closure("version", *s_closure);
                FileInfo::GetInstancePtr()->SetVersion(
                    script::ObjectToValue<int>(value->Evaluate(ownClosure)));
            }
            else
                Log(logging::LogWarning,
                    "Unknown constant declared in scene file: " + script::PrintShortened(target));
        }
        catch (std::exception& e)
        {
            CatchException(e, QUIB_LOCATION);
            Log(logging::LogWarning,
                util::String("An error occurred while deserializing: ") + e.what());
        }
    }
    return blocks;
}
}

void Serializer::DeserializeOld(const script::CodeBlock& program)
{
    FileInfo::GetInstancePtr()->SetVersion(0);
    OldBlocks blocks = ReadOldBlocks(program);
    // One of its own: what was read before that of the blocks ran out is still made.
    const script::Allowance making(script::MaxRunCost);
    for (auto* list : {&blocks.geoms, &blocks.joints, &blocks.others})
        for (EntitySerializer& serializer : *list)
            DeserializeOldEntity(serializer);
}

void Serializer::DeserializeOldEntity(EntitySerializer& serializer)
{
    try
    {
        util::String type = OldType(serializer);
        if (type == "polygon" && PolygonAsBox(serializer))
            type = "box";
        for (const Kind& kind : GetKinds())
            if (kind.oldType && type == kind.oldType)
            {
                (this->*kind.handler)(serializer);
                return;
            }
        Log(logging::LogWarning, "Unknown type: " + util::Shorten(type));
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogWarning,
            util::String("An error occurred while deserializing: ") + e.what());
    }
}
}
