#include "script/Scope.h"

#include "script/Expressions.h"
#include "script/WordSet.h"

#include <limits>
#include <unordered_map>
#include <unordered_set>

namespace script
{
namespace
{
// All words of all infixes. Names of variables rarely begin like any of them.
struct InfixWords
{
    std::unordered_set<util::String> words;
    bool begins[256] = {};
    bool hasWordless = false;
};

InfixWords& AllInfixWords()
{
    static InfixWords* s_words = new InfixWords;
    return *s_words;
}

bool FitsIn(const Infix& infix, const WordSet& words)
{
    for (const util::String& entry : infix.GetPattern())
        if (!entry.empty() && !words.Contains(entry))
            return false;
    return true;
}
}

struct Scope::InfixTable
{
    // Under their first word, so that only those are looked at that have a word in the statement.
    std::unordered_map<util::String, std::vector<InfixPtr>> byFirstWord;
    std::vector<InfixPtr> wordless;
};

namespace
{
// The candidates of one scope that bind most weakly.
struct WeakestInfixes
{
    double precedence = std::numeric_limits<double>::infinity();
    std::vector<InfixPtr> infixes;

    void Consider(const std::vector<InfixPtr>& candidates, const WordSet& words)
    {
        for (const InfixPtr& infix : candidates)
        {
            if (infix->GetPrecedence() > precedence || !FitsIn(*infix, words))
                continue;
            if (infix->GetPrecedence() < precedence)
                infixes.clear();
            precedence = infix->GetPrecedence();
            infixes.push_back(infix);
        }
    }
};
}

Scope::Scope(util::String name)
    : Reflected(std::move(name))
{
}

Scope::Scope(util::String name, const util::WeakPtr<Scope>& superscope)
    : Reflected(std::move(name))
{
    // No search for a ring: nothing lies below a new object.
    Object::SetOwner(superscope);
}

Scope::~Scope() = default;

void Scope::AddInfix(InfixPtr infix)
{
    InfixWords& all = AllInfixWords();
    const util::String* firstWord = nullptr;
    for (const util::String& entry : infix->GetPattern())
        if (!entry.empty())
        {
            all.words.insert(entry);
            all.begins[static_cast<unsigned char>(entry[0])] = true;
            if (!firstWord)
                firstWord = &entry;
        }

    if (!m_infixes)
        m_infixes = std::make_unique<InfixTable>();
    if (firstWord)
        m_infixes->byFirstWord[*firstWord].push_back(infix);
    else
    {
        all.hasWordless = true;
        m_infixes->wordless.push_back(infix);
    }
}

bool Scope::MayBeInfixWord(const util::String& word)
{
    const InfixWords& all = AllInfixWords();
    return !word.empty() && all.begins[static_cast<unsigned char>(word[0])] &&
           all.words.count(word);
}

bool Scope::HasWordlessInfix()
{
    return AllInfixWords().hasWordless;
}

const Scope* Scope::GetSuperscope() const
{
    const ClassObject* owner = GetOwner().GetUnlocked();
    if (!owner)
        return nullptr;
    const Scope* superscope = dynamic_cast<const Scope*>(owner);
    CODE_ASSERT(superscope);
    return superscope;
}

InfixPtr Scope::GetInfix(const WordSet& words) const
{
    // From the outside in. A scope without infixes changes nothing.
    std::vector<const InfixTable*> tables;
    for (const Scope* scope = this; scope; scope = scope->GetSuperscope())
        if (scope->m_infixes)
            tables.push_back(scope->m_infixes.get());

    const std::vector<const util::String*> present = words.GetWords();
    InfixPtr result;
    for (auto it = tables.rbegin(); it != tables.rend(); ++it)
    {
        const InfixTable& table = **it;
        WeakestInfixes weakest;
        weakest.Consider(table.wordless, words);
        for (const util::String* word : present)
        {
            const auto found = table.byFirstWord.find(*word);
            if (found != table.byFirstWord.end())
                weakest.Consider(found->second, words);
        }

        if (result && result->GetPrecedence() < weakest.precedence)
            continue;
        if (weakest.infixes.size() > 1)
            QUIB_THROW(ParseException("Multiple mathcing infix functions found"));
        result = weakest.infixes.empty() ? InfixPtr() : weakest.infixes[0];
    }
    return result;
}

Closure::Closure()
    : Closure("[closure]")
{
}

Closure::Closure(util::String name)
    : Scope(std::move(name))
{
}

Closure::Closure(util::String name, const util::WeakPtr<Closure>& superscope)
    : Scope(std::move(name), superscope)
{
}

Closure::Closure(FunctionDeclarationPtr function, const util::WeakPtr<Closure>& superscope)
    : Scope("", superscope)
    , m_function(std::move(function))
{
}

Closure::~Closure() = default;

util::String Closure::ToText() const
{
    return GetReflectedName();
}

util::String Closure::GetReflectedName() const
{
    // Deliberate: the whole source, so that messages name the function.
    if (m_function)
        return "[function closure: " + m_function->ToCode() + "]";
    return Scope::GetReflectedName();
}
}
