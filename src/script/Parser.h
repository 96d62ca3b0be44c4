// The root of the language: parses texts, runs them, and keeps the two roots in which they leave their
// marks. Lives from the first AddToRoot to the end of the program.
#pragma once

#include "script/Expressions.h"
#include "script/KeyBinder.h"
#include "script/Tokenizer.h"
#include "util/Singleton.h"

namespace script
{
extern const char* const RootScopeName;
extern const char* const KeywordInfix;

/// Of a token of that text, whatever its kind.
bool EndsStatement(const util::String& text);

class Parser final : public util::Pointee, public util::Singleton<Parser>
{
public:
    Parser();
    ~Parser() override;

    /// Parses without running anything. A failure is reported on the error sink; the result is null.
    CodeBlockPtr Parse(const util::String& text);
    CodeBlockPtr Parse(const TokenList& tokens);

    // Whatever a script throws ends here. Afterwards all attributes are up to date; only what the setter
    // or callback of one of them throws, and is no std::exception, goes through.

    /// Runs the expression in the root closure. A failure is reported on the error sink and gives an
    /// ErrorObject, as does null, which is what a text that does not parse gives.
    ObjectPtr Execute(const ExpressionPtr& expression);
    ObjectPtr Execute(const TokenList& tokens);
    ObjectPtr Execute(const util::String& text);
    /// The text of the result.
    util::String ExecuteToString(const util::String& text);

    /// Once a frame: recalculates all formulas.
    void Update();

    /// The whole root closure as statements that would set it up again. What a script put in the place
    /// of the intrinsics is left out with a warning: read back, it would break all arithmetic.
    util::String ToCode();
    /// Writes ToCode to the file, unless that is empty. A failure is logged.
    /// @return false for a failure
    bool SaveConfig(util::String path);
    /// Runs a file. A failure is logged.
    void LoadConfig(std::string path);

    /// Completes the name at the end of the line as far as it is unique, and corrects its case.
    /// @return all candidates, when there are several
    std::vector<util::String> Expand(util::String& line);

    const ClosurePtr& GetRootClosure() const { return m_rootClosure; }
    const ScopePtr& GetRootScope() const { return m_rootScope; }
    /// Registers the infix with both roots.
    void AddInfix(InfixPtr infix);

private:
    using TokenIt = const Token*;
    class DepthGuard;

    CodeBlockPtr ParseCodeBlock(const ScopePtr& scope, TokenIt& it);
    ExpressionPtr ParseExpression(const ScopePtr& scope, TokenIt& it);
    ExpressionPtr ParseFunctionDeclaration(const ScopePtr& scope, TokenIt& it);
    ExpressionPtr ParseInfixDeclaration(const ScopePtr& scope, TokenIt& it);
    ExpressionList ParseExpressionList(const ScopePtr& scope, TokenIt& it);
    ExpressionPtr ParseListDeclaration(const ScopePtr& scope, TokenIt& it);
    ExpressionPtr ParseBlock(const ScopePtr& scope, TokenIt& it);
    void SwallowToken(TokenIt& it, char text);
    void SwallowToken(TokenIt& it, const char* text);
    bool IsFunctionDeclaration(TokenIt it);

    ClosurePtr m_rootClosure;
    ScopePtr m_rootScope;
    KeyBinderPtr m_keyBinder;
    boost::function<void(const util::String&)> m_errorSink;
    TokenIt m_end = nullptr; // of the tokens being parsed: there is one parse at a time
    TokenIt m_begin = nullptr;
    std::vector<bool> m_functionHeads; // which "(" begin the head of a function; made at need
    ExpressionList m_items;            // of all statements being parsed, the innermost at the end
    int m_depth = 0;                   // of nesting
};
}
