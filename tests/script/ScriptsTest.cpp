// Runs the scripts of tests/script/cases. Lines are gathered up to one that ends in an expectation and
// run together, as one program, by the same parser as the lines before them:
//
//     x = 1;
//     x + 2      // expect: 3
//     y          // expect error: y not found in scope
//
// "expect" is the text of the program's value. "expect error" is the end of a warning, and the value is
// then an error.
#include "ScriptFixture.h"

#include "util/FileSystem.h"

using namespace script;

namespace
{
const std::string CaseDir = QUIB_SOURCE_DIR "/tests/script/cases/";

std::vector<std::string> CaseNames()
{
    std::vector<std::string> names =
        util::FileSystem::GetInstancePtr()->FilesInDir(CaseDir, "*.qib");
    for (std::string& name : names)
        name.resize(name.size() - 4);
    return names;
}

// The rest of the line behind the mark; false when the mark is not there.
bool TextBehind(const std::string& line, const std::string& mark, std::string& text)
{
    const size_t at = line.find(mark);
    if (at == std::string::npos)
        return false;
    text = line.substr(at + mark.size());
    return true;
}

class Scripts : public test::Script, public testing::WithParamInterface<std::string>
{
};
}

TEST_P(Scripts, DoWhatTheySay)
{
    std::istringstream lines(test::Slurp(CaseDir + GetParam() + ".qib"));
    std::string program, line, expected;
    int expectations = 0;
    for (int number = 1; std::getline(lines, line); ++number)
    {
        program += line + "\n";
        SCOPED_TRACE(GetParam() + ".qib:" + util::ToString(number) + "\n" + program);
        if (TextBehind(line, "// expect: ", expected))
            EXPECT_EQ(expected, Run(program));
        else if (TextBehind(line, "// expect error: ", expected))
        {
            test::LogCapture log(logging::LogWarning);
            EXPECT_EQ("error", Run(program));
            size_t hits = 0;
            for (const std::string& warning : log.Lines())
                hits += util::ends_with(warning, expected);
            EXPECT_NE(0u, hits) << log.Text();
        }
        else
            continue;
        ++expectations;
        program.clear();
    }
    EXPECT_NE(0, expectations);
    EXPECT_EQ("", program) << "nothing is expected of the last lines";
}

INSTANTIATE_TEST_SUITE_P(All, Scripts, testing::ValuesIn(CaseNames()),
                         [](const auto& info) { return info.param; });
