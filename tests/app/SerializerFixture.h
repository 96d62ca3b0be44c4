// Scenes as texts, and back.
#pragma once

#include "AppFixture.h"

namespace app
{
class SerializerFixture : public AppFixture
{
protected:
    static Serializer* TheSerializer() { return Serializer::GetInstancePtr(); }
    static GroupPtr Load(const util::String& text)
    {
        TheScene()->ClearScene();
        return TheSerializer()->Deserialize(text);
    }

    /// The block of the n-th statement that begins with the words.
    static util::String Block(const util::String& text, const util::String& words, int n = 0)
    {
        size_t at = text.find(words);
        while (n-- > 0 && at != util::String::npos)
            at = text.find(words, at + 1);
        return at == util::String::npos ? "" : text.substr(at, text.find("})", at) - at);
    }
    /// What stands in the block under the key; "" when it is not there.
    static util::String ValueOf(const util::String& block, const util::String& key)
    {
        for (const util::String& line : util::Split(block, '\n'))
            if (util::starts_with(line, "    " + key + " = "))
            {
                const util::String value = line.substr(key.size() + 7);
                return util::ends_with(value, ";") ? value.substr(0, value.size() - 1) : value;
            }
        return "";
    }
    static bool Has(const util::String& text, const util::String& part)
    {
        return text.find(part) != util::String::npos;
    }
    static size_t Count(const util::String& text, const util::String& part)
    {
        size_t n = 0;
        for (size_t at = text.find(part); at != util::String::npos; at = text.find(part, at + 1))
            ++n;
        return n;
    }
    /// Loaded and saved twice; the two files are the same.
    static util::String ExpectStable(const util::String& text)
    {
        Load(text);
        const util::String first = Save();
        Load(first);
        EXPECT_EQ(first, Save());
        return first;
    }
    static EntityPtr EntityAt(size_t i) { return TheScene()->GetEntities().at(i); }
};
}
