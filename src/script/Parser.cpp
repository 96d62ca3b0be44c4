#include "script/Parser.h"

#include "script/Attributes.h"
#include "script/Intrinsics.h"
#include "script/Recursion.h"
#include "script/WordSet.h"
#include "util/FileSystem.h"

namespace script
{
const char* const RootScopeName = "ROOT_SCOPE";
const char* const KeywordInfix = "infix";

namespace
{
void LogWarning(const util::String& text)
{
    Log(logging::LogWarning, text);
}

void ParserAssert(bool condition, const char* message)
{
    if (!condition)
        QUIB_THROW(ParseException(message));
}

const util::String s_infix = KeywordInfix;

// Deliberate: what ends a statement, and what is expected next, is compared by text and not by kind, so
// that the string ";" ends a statement. Only where an item may stand is a string always a literal.

bool IsChar(const util::String& text, char c)
{
    return text.size() == 1 && text[0] == c;
}

bool IsChar(const Token& token, char c)
{
    return IsChar(token.text, c);
}

/// The character of a name of one character, else 0.
char GetOperator(const Token& token)
{
    return token.IsIdentifier() && token.text.size() == 1 ? token.text[0] : '\0';
}

bool IsBlockEnder(const Token& token)
{
    return IsChar(token, ')') || IsChar(token, '}') || IsChar(token, ']');
}

bool IsStatementEnder(const util::String& text)
{
    if (text.size() != 1)
        return false;
    const char c = text[0];
    return c == ')' || c == '}' || c == ']' || c == ';' || c == ',';
}

bool ParseBool(const util::String& text)
{
    return util::FromString<bool>(text);
}

Int ParseInt(const util::String& text)
{
    return util::FromString<Int>(text);
}

Float ParseFloat(const util::String& text)
{
    return util::FromString<Float>(text);
}

util::String ParseString(const util::String& text)
{
    return text;
}

ExpressionPtr ParseLiteralOrName(const Token& token)
{
    switch (token.type)
    {
    case TokenType_Bool:
        return QUIB_NEW Literal<bool>(ParseBool(token.text));
    case TokenType_Float:
        return QUIB_NEW Literal<Float>(ParseFloat(token.text));
    case TokenType_Int:
        return QUIB_NEW Literal<Int>(ParseInt(token.text));
    case TokenType_String:
        return QUIB_NEW Literal<util::String>(ParseString(token.text));
    case TokenType_Identifier:
        return QUIB_NEW Identifier(ExpressionPtr(), token.text);
    }
    QUIB_THROW(ParseException("Unknown token \"" + util::Shorten(token.text) + "\""));
}

IdentifierPtr AsIdentifierPtr(const ExpressionPtr& item)
{
    return IdentifierPtr(const_cast<Identifier*>(item->AsIdentifier()));
}

// The second stage of a statement: folds its items into a tree, by the infix that binds most weakly or,
// where there is none, as a chain of calls.
class ItemFolder
{
public:
    /// @param depth  the parser's count of nesting, which operands add to
    ItemFolder(const Scope& scope, const ExpressionPtr* items, size_t count, int depth)
        : m_scope(scope)
        , m_items(items)
        , m_count(count)
        , m_depth(depth)
    {
    }

    /// True for an item that alone is a whole statement, by far the commonest case.
    static bool IsWhole(const Expression& item)
    {
        const Identifier* name = item.AsIdentifier();
        return !Scope::HasWordlessInfix() && !(name && Scope::MayBeInfixWord(name->GetName()));
    }

    ExpressionPtr Fold()
    {
        for (size_t i = 0; i < m_count; ++i)
            if (const Identifier* name = m_items[i]->AsIdentifier())
                if (Scope::MayBeInfixWord(name->GetName()))
                    m_words.Add(name->GetName(), i);
        return Fold(0, m_count);
    }

private:
    ExpressionPtr Fold(size_t begin, size_t end)
    {
        if (begin == end)
            return ExpressionPtr();
        CODE_ASSERT(begin < end);

        InfixPtr infix;
        if (!m_words.empty() || Scope::HasWordlessInfix())
            infix = m_scope.GetInfix(WordSet(m_words, begin, end));
        return infix ? FoldInfix(infix, begin, end) : FoldCalls(begin, end);
    }

    ExpressionPtr FoldCalls(size_t begin, size_t end) const
    {
        ExpressionPtr result = m_items[begin];
        for (size_t i = begin + 1; i < end; ++i)
        {
            const ExpressionPtr& item = m_items[i];
            BlockPtr args;
            if (const Block* block = item->AsBlock())
                args.Reset(const_cast<Block*>(block));
            else
            {
                args = QUIB_NEW Block;
                args->Add(item);
            }
            result = QUIB_NEW FunctionCall(std::move(result), std::move(args));
        }
        return result;
    }

    // Deliberate: a hole ends at the first word that fits, so that the right operand of a chain holds
    // the rest of it. Every infix groups to the right, whatever associativity it was declared with.
    ExpressionPtr FoldInfix(const InfixPtr& infix, size_t begin, size_t end)
    {
        const std::vector<util::String>& pattern = infix->GetPattern();
        const WordSet words(m_words, begin, end);
        ExpressionList args;
        size_t p = begin;
        for (size_t i = 0; i < pattern.size(); ++i)
        {
            if (!pattern[i].empty())
            {
                if (p >= end || words.Find(pattern[i], p) != p)
                    QUIB_THROW(ParseException("Missing keyword " + util::Shorten(pattern[i])));
                ++p;
                continue;
            }
            size_t holeEnd = end;
            if (i + 1 < pattern.size())
            {
                holeEnd = words.Find(pattern[i + 1], p);
                if (holeEnd == end)
                    QUIB_THROW(ParseException("Could not find infix function keyword " +
                                              util::Shorten(pattern[i + 1])));
            }
            args.push_back(FoldOperand(p, holeEnd));
            p = holeEnd;
        }
        ParserAssert(p == end, "Bad parse");
        return QUIB_NEW InfixFunctionCall(infix, std::move(args));
    }

    ExpressionPtr FoldOperand(size_t begin, size_t end)
    {
        ParserAssert(m_depth < MaxParseDepth && !IsStackLow(), "Expression nested too deeply");
        ++m_depth;
        ExpressionPtr operand = Fold(begin, end);
        --m_depth;
        return operand;
    }

    const Scope& m_scope;
    const ExpressionPtr* m_items;
    size_t m_count;
    int m_depth;
    WordPositions m_words;
};

// For each "(" whether it and its ")" are the head of a function, that is, whether "=>" follows. One
// pass for all: a search from each "(" would be quadratic in nested brackets.
std::vector<bool> FindFunctionHeads(const Token* begin, const Token* end)
{
    std::vector<bool> heads(static_cast<size_t>(end - begin));
    std::vector<size_t> open;
    for (const Token* it = begin; it != end; ++it)
    {
        if (GetOperator(*it) == '(')
            open.push_back(static_cast<size_t>(it - begin));
        else if (IsChar(*it, ')') && !open.empty())
        {
            heads[open.back()] = it + 1 != end && it[1].text == "=>";
            open.pop_back();
        }
    }
    return heads;
}
}

bool EndsStatement(const util::String& text)
{
    return IsStatementEnder(text);
}

// One per nested block, list, function and declaration.
class Parser::DepthGuard
{
public:
    explicit DepthGuard(Parser& parser)
        : m_parser(parser)
    {
        ParserAssert(parser.m_depth < MaxParseDepth && !IsStackLow(),
                     "Expression nested too deeply");
        ++m_parser.m_depth;
    }
    ~DepthGuard() { --m_parser.m_depth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    Parser& m_parser;
};

Parser::Parser()
    : m_rootClosure(QUIB_NEW Closure(Reflected::RootName))
    , m_rootScope(QUIB_NEW Scope(RootScopeName))
    , m_keyBinder(QUIB_NEW KeyBinder)
{
    m_rootClosure->AddReflectedChild(m_keyBinder);
    m_errorSink = LogWarning;
    AddIntrinsics(*this);
}

Parser::~Parser() = default;

CodeBlockPtr Parser::Parse(const util::String& text)
{
    TokenList tokens;
    try
    {
        tokens = Tokenizer::Tokenize(text);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        m_errorSink(util::String("Tokenizer error: ") + e.what());
        return CodeBlockPtr();
    }
    return Parse(tokens);
}

CodeBlockPtr Parser::Parse(const TokenList& tokens)
{
    CodeBlockPtr block;
    try
    {
        m_begin = tokens.data();
        m_end = m_begin + tokens.size();
        m_functionHeads.clear();
        TokenIt it = m_begin;
        block = ParseCodeBlock(m_rootScope, it);
        if (it > m_end)
            QUIB_THROW(ScriptException("Parsed too many tokens (real bad stuff)"));
        if (it < m_end)
            QUIB_THROW(ScriptException("Unexpected token: " + util::Shorten(it->text)));
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        m_errorSink(util::String("Parse error: ") + e.what());
        block.Reset(nullptr);
    }
    m_items.clear();
    return block;
}

void Parser::SwallowToken(TokenIt& it, char text)
{
    if (it == m_end || !IsChar(*it, text))
        QUIB_THROW(ParseException(util::String("Missing ") + text));
    ++it;
}

void Parser::SwallowToken(TokenIt& it, const char* text)
{
    if (it == m_end || it->text != text)
        QUIB_THROW(ParseException(util::String("Missing ") + text));
    ++it;
}

CodeBlockPtr Parser::ParseCodeBlock(const ScopePtr& scope, TokenIt& it)
{
    CodeBlockPtr block = QUIB_NEW CodeBlock;
    while (it != m_end && !IsBlockEnder(*it))
    {
        block->Add(ParseExpression(scope, it));
        if (it != m_end && !IsBlockEnder(*it))
            SwallowToken(it, ';');
    }
    return block;
}

ExpressionList Parser::ParseExpressionList(const ScopePtr& scope, TokenIt& it)
{
    ExpressionList list;
    while (it != m_end && !IsBlockEnder(*it))
    {
        list.push_back(ParseExpression(scope, it));
        if (it != m_end && !IsBlockEnder(*it))
            SwallowToken(it, ',');
    }
    return list;
}

ExpressionPtr Parser::ParseBlock(const ScopePtr& scope, TokenIt& it)
{
    DepthGuard guard(*this);
    SwallowToken(it, '(');
    BlockPtr block = QUIB_NEW Block(ParseExpressionList(scope, it));
    SwallowToken(it, ')');
    return block;
}

ExpressionPtr Parser::ParseListDeclaration(const ScopePtr& scope, TokenIt& it)
{
    DepthGuard guard(*this);
    SwallowToken(it, '[');
    ExpressionPtr list = QUIB_NEW ListDeclaration(ParseExpressionList(scope, it));
    SwallowToken(it, ']');
    return list;
}

ExpressionPtr Parser::ParseExpression(const ScopePtr& scope, TokenIt& it)
{
    // In a = b = 1 the targets pile up, outermost first, until the value comes.
    std::vector<IdentifierPtr> targets;
    // The items of this statement stand behind those of the statements around it.
    const size_t first = m_items.size();
    ExpressionPtr result;
    for (bool isComplete = false; !isComplete;)
    {
        if (it == m_end)
            QUIB_THROW(ParseException("Unexpected end of expression"));
        if (it->text == s_infix)
        {
            result = ParseInfixDeclaration(scope, it);
            break;
        }

        isComplete = true;
        while (it != m_end && !IsStatementEnder(it->text))
        {
            const char op = GetOperator(*it);
            if (op == '.')
            {
                ParserAssert(m_items.size() > first, "General parse error");
                ++it;
                ParserAssert(it != m_end && it->IsIdentifier(), "General parse error");
                ExpressionPtr& last = m_items.back();
                last = QUIB_NEW Identifier(last, it->text);
                ++it;
            }
            else if (op == '=')
            {
                if (m_items.size() == first + 1)
                {
                    IdentifierPtr target = AsIdentifierPtr(m_items.back());
                    ParserAssert(static_cast<bool>(target), "You can only assign to an identifier");
                    ++it;
                    targets.push_back(std::move(target));
                    m_items.pop_back();
                    isComplete = false;
                    break;
                }
                ++it;
                QUIB_THROW(ParseException("Bad placement of = (info: " +
                                          (it != m_end ? util::Shorten(it->text) : util::String()) +
                                          ")"));
            }
            else if (op == '(')
                m_items.push_back(IsFunctionDeclaration(it) ? ParseFunctionDeclaration(scope, it)
                                                            : ParseBlock(scope, it));
            else if (op == '[')
                m_items.push_back(ParseListDeclaration(scope, it));
            else if (op == '{')
                m_items.push_back(ParseFunctionDeclaration(scope, it));
            else
                m_items.push_back(ParseLiteralOrName(*it++));
        }
        const size_t count = m_items.size() - first;
        if (!isComplete || count == 0)
            continue;
        if (count == 1 && ItemFolder::IsWhole(*m_items.back()))
            result = m_items.back();
        else
            result = ItemFolder(*scope, &m_items[first], count, m_depth).Fold();
        m_items.resize(first);
    }

    for (; !targets.empty(); targets.pop_back())
        result = QUIB_NEW Assignment(std::move(targets.back()), std::move(result));
    return result;
}

bool Parser::IsFunctionDeclaration(TokenIt it)
{
    if (m_functionHeads.empty())
        m_functionHeads = FindFunctionHeads(m_begin, m_end);
    return m_functionHeads[static_cast<size_t>(it - m_begin)];
}

ExpressionPtr Parser::ParseFunctionDeclaration(const ScopePtr& scope, TokenIt& it)
{
    DepthGuard guard(*this);
    const ScopePtr inner = QUIB_NEW Scope("[function scope]", scope);
    std::vector<util::String> names;
    if (IsChar(*it, '('))
    {
        SwallowToken(it, '(');
        while (m_end - it >= 2 && !IsChar(*it, ')'))
        {
            ParserAssert(it->IsIdentifier(), "Argument list must consist of Identifiers");
            names.push_back(it->text);
            ++it;
            inner->AddVariable(QUIB_NEW Variable(names.back(), QUIB_NEW Unbound, false));
            if (!IsChar(*it, ','))
                break;
            ++it;
        }
        SwallowToken(it, ')');
        SwallowToken(it, "=>");
    }
    SwallowToken(it, '{');
    CodeBlockPtr body = ParseCodeBlock(inner, it);
    SwallowToken(it, '}');
    return QUIB_NEW FunctionDeclaration(std::move(names), std::move(body));
}

ExpressionPtr Parser::ParseInfixDeclaration(const ScopePtr& scope, TokenIt& it)
{
    DepthGuard guard(*this);
    const auto expectToken = [&]
    { ParserAssert(it != m_end, "Unexpected end of infix declaration"); };

    SwallowToken(it, KeywordInfix);
    expectToken();
    const double precedence = util::FromString<double>(it->text);
    ++it;
    expectToken();
    const bool isLeft = it->text == "left";
    ParserAssert(isLeft || it->text == "right", "Bad infix function");
    ++it;
    expectToken();
    SwallowToken(it, ':');

    std::vector<util::String> pattern;
    for (; it != m_end && it->text != "=>"; ++it)
        pattern.push_back(it->text == "_" ? util::String() : it->text);
    SwallowToken(it, "=>");
    ExpressionPtr function = ParseExpression(scope, it);

    const InfixPtr infix =
        QUIB_NEW Infix(precedence, isLeft ? Associativity_Left : Associativity_Right,
                       std::move(pattern), function);
    // At once: every statement from here on is read with it.
    scope->AddInfix(infix);
    return QUIB_NEW InfixDeclaration(infix);
}

ObjectPtr Parser::Execute(const ExpressionPtr& expression)
{
    ObjectPtr result;
    try
    {
        const Allowance allowance(MaxRunCost);
        result = expression->Evaluate(m_rootClosure);
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        m_errorSink(util::String("Tree evaluation error: ") + e.what());
        result = QUIB_NEW ErrorObject;
    }
    catch (...)
    {
        CatchException(QUIB_LOCATION);
        // Deliberate: "excpetion".
        m_errorSink("Parser threw unknown excpetion.");
        result = QUIB_NEW ErrorObject;
    }
    AbstractAttrib::CalcAll();
    return result;
}

ObjectPtr Parser::Execute(const TokenList& tokens)
{
    return Execute(Parse(tokens));
}

ObjectPtr Parser::Execute(const util::String& text)
{
    return Execute(Parse(text));
}

util::String Parser::ExecuteToString(const util::String& text)
{
    const ObjectPtr result = Execute(text);
    if (!result)
        return "";
    try
    {
        return result->ToText();
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        m_errorSink(util::String("Tree evaluation error: ") + e.what());
        return ErrorObject().ToText();
    }
}

void Parser::Update()
{
    AbstractAttrib::CalcAll();
}

util::String Parser::ToCode()
{
    const CodeBlockPtr root = util::DynamicCast<CodeBlock>(m_rootClosure->ToExpression());
    CodeBlock saved;
    for (const ExpressionPtr& statement : root->GetElements())
    {
        const Assignment* assignment = statement->AsAssignment();
        const bool isRootVariable = assignment && !assignment->GetTarget()->GetOwnerExpression();
        if (!isRootVariable || assignment->GetTarget()->GetName() != IntrinsicsName)
            saved.Add(statement);
        else
            LogWarning(util::String("Failed to print ") + IntrinsicsName +
                       ": all arithmetic would be lost with it");
    }
    return saved.ToCode();
}

bool Parser::SaveConfig(util::String path)
{
    try
    {
        const util::String code = ToCode();
        // Deliberate: nothing to say leaves what was said before.
        if (!code.empty())
            util::FileSystem::GetInstancePtr()->WriteFile(path, code);
        return true;
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("Failed saving config file: ") + e.what());
        return false;
    }
}

void Parser::LoadConfig(std::string path)
{
    Log(logging::LogVerbose, "Parsing " + path + "...");
    try
    {
        AbstractAttrib::CalcAll();
        Execute(util::FileSystem::GetInstancePtr()->ReadWholeFile(path));
    }
    catch (std::exception& e)
    {
        CatchException(e, QUIB_LOCATION);
        Log(logging::LogError, util::String("Failed loading config file: ") + e.what());
    }
}

void Parser::AddInfix(InfixPtr infix)
{
    m_rootScope->AddInfix(infix);
    m_rootClosure->AddInfix(infix);
}
}
