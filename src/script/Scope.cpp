#include "script/Scope.h"

#include "script/Expressions.h"
#include "script/WordSet.h"

#include <algorithm>
#include <cmath>
#include <map>
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
    bool hasWordless = false; // some infix consists of holes only, so that names prove nothing
};

InfixWords& AllInfixWords()
{
    static InfixWords* s_words = new InfixWords;
    return *s_words;
}

// The words of the infix, each once.
struct Candidate
{
    InfixPtr infix;
    std::vector<util::String> words;

    bool FitsIn(const WordSet& present) const
    {
        for (const util::String& word : words)
            if (!present.Contains(word))
                return false;
        return true;
    }
};

// NaN binds most strongly, so that the order is one.
struct BindsMoreWeakly
{
    bool operator()(double a, double b) const { return a < b || (std::isnan(b) && !std::isnan(a)); }
};

using Candidates = std::multimap<double, Candidate, BindsMoreWeakly>;

// The infixes of one scope that fit and bind most weakly.
struct WeakestInfixes
{
    std::vector<InfixPtr> infixes;

    void Consider(const Candidates& candidates, const WordSet& words)
    {
        const BindsMoreWeakly bindsMoreWeakly;
        for (const auto& candidate : candidates)
        {
            if (!infixes.empty() && bindsMoreWeakly(infixes[0]->GetPrecedence(), candidate.first))
                return;
            if (!candidate.second.FitsIn(words))
                continue;
            if (!infixes.empty() && bindsMoreWeakly(candidate.first, infixes[0]->GetPrecedence()))
                infixes.clear();
            infixes.push_back(candidate.second.infix);
            // More of them would only be as ambiguous.
            if (infixes.size() > 1)
                return;
        }
    }
};
}

struct Scope::InfixTable
{
    // Each under that of its words which had fewest when it was added, so that those are looked at that
    // have it in the statement, and few besides.
    std::unordered_map<util::String, Candidates> byWord;
    Candidates wordless;
};

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
    if (!m_infixes)
        m_infixes = std::make_unique<InfixTable>();
    const std::vector<util::String>& pattern = infix->GetPattern();
    std::vector<util::String> words(pattern.begin(), pattern.end());
    std::sort(words.begin(), words.end());
    words.erase(std::unique(words.begin(), words.end()), words.end());
    words.erase(std::remove(words.begin(), words.end(), util::String()), words.end());

    InfixWords& all = AllInfixWords();
    all.hasWordless = all.hasWordless || words.empty();
    Candidates* fewest = words.empty() ? &m_infixes->wordless : nullptr;
    for (const util::String& word : words)
    {
        all.words.insert(word);
        all.begins[static_cast<unsigned char>(word[0])] = true;
        Candidates& candidates = m_infixes->byWord[word];
        if (!fewest || candidates.size() < fewest->size())
            fewest = &candidates;
    }
    const double precedence = infix->GetPrecedence();
    fewest->emplace(precedence, Candidate{std::move(infix), std::move(words)});
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
            const auto found = table.byWord.find(*word);
            if (found != table.byWord.end())
                weakest.Consider(found->second, words);
        }

        if (result && (weakest.infixes.empty() ||
                       result->GetPrecedence() < weakest.infixes[0]->GetPrecedence()))
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
