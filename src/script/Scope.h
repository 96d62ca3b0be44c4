// Where names live: a Scope while parsing, a Closure while running.
#pragma once

#include "script/Infix.h"
#include "script/Reflected.h"

#include <memory>

namespace script
{
class WordSet;
class Scope;
class Closure;

using ScopePtr = util::SharedPtr<Scope>;

// A named object with infix declarations. The owner is the superscope; the link is weak.
class Scope : public Reflected
{
public:
    explicit Scope(util::String name);
    Scope(util::String name, const util::WeakPtr<Scope>& superscope);
    ~Scope() override;

    void AddInfix(InfixPtr infix);
    /// Of the infixes here and outward whose words are all present: the one that binds most weakly,
    /// null if there is none.
    /// @throws ParseException  when several bind equally weakly in one scope
    InfixPtr GetInfix(const WordSet& words) const;

    /// False when the word is part of no infix in any scope, ever. Quick; true proves nothing.
    static bool MayBeInfixWord(const util::String& word);
    /// True when some infix consists of holes only, and so fits everywhere.
    static bool HasWordlessInfix();

private:
    struct InfixTable;

    const Scope* GetSuperscope() const;

    std::unique_ptr<InfixTable> m_infixes; // made at the first AddInfix
};

// The variables of one activation of a function, or of the whole program. What keeps an enclosing
// closure alive is the function that refers to it.
class Closure final : public Scope
{
public:
    Closure();
    explicit Closure(util::String name);
    Closure(util::String name, const util::WeakPtr<Closure>& superscope);
    /// Named after the source of the function, but nobody pays for that text before it is asked for.
    Closure(FunctionDeclarationPtr function, const util::WeakPtr<Closure>& superscope);
    ~Closure() override;

    util::String ToText() const override;
    util::String GetReflectedName() const override;

private:
    FunctionDeclarationPtr m_function;
};
}
