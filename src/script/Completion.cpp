// Completion of names at the console.
#include "script/Parser.h"

#include <set>

namespace script
{
namespace
{
// Names stored in one another could be dotted on for ever.
const size_t MaxNames = 100;

bool IsLower(char c)
{
    return c >= 'a' && c <= 'z';
}

bool IsUpper(char c)
{
    return c >= 'A' && c <= 'Z';
}

bool IsCompletable(char c)
{
    return IsLower(c) || IsUpper(c) || (c >= '0' && c <= '9') || c == '.' || c == '_';
}

/// A function of no arguments that only names another object is an alias; null for anything else.
ObjectPtr FollowAlias(const ObjectPtr& object)
{
    Function* function = As<Function>(object);
    if (!function)
        return ObjectPtr();
    const CodeBlock* body = dynamic_cast<const CodeBlock*>(function->GetBody().get());
    if (function->GetArgCount() != 0 || !body || body->GetElements().size() != 1)
        return ObjectPtr();
    const Identifier* name = body->GetElements()[0]->AsIdentifier();
    if (!name)
        return ObjectPtr();
    try
    {
        return name->GetValue(function->GetClosure());
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        return ObjectPtr();
    }
}

/// The class object of that name, in any case, which gets corrected; null if there is none.
ClassObjectPtr GetChild(const ClassObject& owner, util::String& name)
{
    for (const VariablePtr& variable : owner.GetVariables())
    {
        if (!util::iequals(variable->GetName(), name))
            continue;
        name = variable->GetName();
        const ObjectPtr alias = FollowAlias(variable->GetObject());
        if (const ClassObjectPtr child = As<ClassObject>(alias ? alias : variable->GetObject()))
            return child;
    }
    return ClassObjectPtr();
}

/// Where all candidates agree on the case of a character, the name follows.
void CorrectCase(util::String& name, const std::vector<util::String>& candidates)
{
    for (size_t i = 0; i < name.size(); ++i)
    {
        bool allLower = true, allUpper = true;
        for (const util::String& candidate : candidates)
        {
            allLower = allLower && IsLower(candidate[i]);
            allUpper = allUpper && IsUpper(candidate[i]);
        }
        if (allLower || allUpper)
            name[i] = candidates[0][i];
    }
}

char ToLower(char c)
{
    return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The number of characters in which all candidates are alike but for their case.
size_t CalcCommonLength(const std::vector<util::String>& candidates)
{
    const util::String& first = candidates[0];
    size_t length = first.size();
    for (const util::String& candidate : candidates)
    {
        size_t alike = 0;
        while (alike < length && alike < candidate.size() &&
               ToLower(candidate[alike]) == ToLower(first[alike]))
            ++alike;
        length = alike;
    }
    return length;
}

std::vector<util::String> ExpandId(const ClassObject& owner, util::String& name)
{
    std::set<util::String> sorted;
    for (const VariablePtr& variable : owner.GetVariables())
    {
        if (!util::istarts_with(variable->GetName(), name))
            continue;
        const ClassObjectPtr child = As<ClassObject>(variable->GetObject());
        sorted.insert(variable->GetName() + (child && child->HasVariables() ? "." : ""));
    }

    std::vector<util::String> candidates(sorted.begin(), sorted.end());
    if (candidates.empty())
        return candidates;
    if (candidates.size() == 1)
    {
        name = candidates[0];
        return {};
    }
    CorrectCase(name, candidates);
    name += candidates[0].substr(name.size(), CalcCommonLength(candidates) - name.size());
    return candidates;
}

std::vector<util::String> ExpandIdChain(const ClosurePtr& root, util::String& chain)
{
    std::vector<util::String> names = util::Split(chain, '.');
    if (names.size() > MaxNames)
        return {};
    ClassObjectPtr owner = root;
    for (size_t i = 0; i + 1 < names.size(); ++i)
    {
        owner = GetChild(*owner, names[i]);
        if (!owner)
            return {};
    }
    const std::vector<util::String> candidates = ExpandId(*owner, names.back());
    chain = util::Join(names, ".");
    return candidates;
}
}

std::vector<util::String> Parser::Expand(util::String& line)
{
    size_t begin = line.size();
    while (begin > 0 && IsCompletable(line[begin - 1]))
        --begin;
    util::String chain = line.substr(begin);
    const std::vector<util::String> candidates = ExpandIdChain(m_rootClosure, chain);
    line.replace(begin, util::String::npos, chain);
    return candidates;
}
}
