// A root closure of one's own, as far as one parser for all tests allows: what a test leaves in the root
// is taken out again.
#pragma once

#include "TestSupport.h"
#include "script/Parser.h"

#include <gtest/gtest.h>

#include <set>

namespace test
{
class Script : public testing::Test
{
protected:
    Script()
        : m_root(NamesIn(Root()))
        , m_math(NamesIn(Math()))
    {
    }
    ~Script() override
    {
        RemoveAllBut(m_root, Root());
        RemoveAllBut(m_math, Math());
        // An object goes without an owner when a second name for it is removed.
        for (const script::VariablePtr& variable : Root().GetVariables())
            variable->SetOwner(util::WeakPtr<script::ClassObject>(&Root()));
    }

    static script::Parser& Parser() { return *script::Parser::GetInstancePtr(); }
    static script::Closure& Root() { return *Parser().GetRootClosure(); }

    /// The text of the value.
    static std::string Run(const std::string& text) { return Parser().ExecuteToString(text); }
    static script::ObjectPtr Evaluate(const std::string& text) { return Parser().Execute(text); }

    /// The warnings, without their common head, that running the text gives.
    static std::vector<std::string> WarningsOf(const std::string& text)
    {
        const LogCapture log(logging::LogWarning);
        Run(text);
        const std::string head = "-- Warning: ";
        std::vector<std::string> warnings;
        for (const std::string& line : log.Lines())
            if (line.compare(0, head.size(), head) == 0)
                warnings.push_back(line.substr(head.size()));
        return warnings;
    }
    /// The first of them; "" if there is none.
    static std::string WarningOf(const std::string& text)
    {
        const std::vector<std::string> warnings = WarningsOf(text);
        return warnings.empty() ? "" : warnings[0];
    }

private:
    using Names = std::set<std::string>;

    static script::ClassObject& Math()
    {
        return dynamic_cast<script::ClassObject&>(*Root().GetObject("math"));
    }
    static Names NamesIn(const script::ClassObject& object)
    {
        Names names;
        for (const script::VariablePtr& variable : object.GetVariables())
            names.insert(variable->GetName());
        return names;
    }
    static void RemoveAllBut(const Names& names, script::ClassObject& object)
    {
        for (const script::VariablePtr& variable : object.GetVariables())
            if (!names.count(variable->GetName()))
                object.RemoveVariable(variable->GetName());
    }

    const Names m_root;
    const Names m_math;
};
}
