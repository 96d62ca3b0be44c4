#include "input/Recording.h"

#include "input/Key.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace input
{
const char* const RecordingHead = "quib recording 1";

namespace
{
const char* const HeadWithoutVersion = "quib recording ";
const int MaxExtent = 65535; // pixels: SDL's limit in an event

// A number of an event, and how it is written.
struct Field
{
    int (*get)(const SDL_Event&);
    void (*set)(SDL_Event&, int);
    int low, high;
    bool isKey;
};

// What an event is called, and its numbers in order. One table for both directions.
struct EventKind
{
    const char* name;
    Uint8 type;
    std::vector<Field> fields;
};

#define EVENT_FIELD(member, low, high, isKey)                                                      \
    Field                                                                                          \
    {                                                                                              \
        [](const SDL_Event& e) { return static_cast<int>(e.member); },                             \
            [](SDL_Event& e, int value) { e.member = static_cast<decltype(e.member)>(value); },    \
            low, high, isKey                                                                       \
    }
#define NUMBER_FIELD(member, low, high) EVENT_FIELD(member, low, high, false)

const std::vector<EventKind>& EventKinds()
{
    const Field key = EVENT_FIELD(key.keysym.sym, 0, SDLK_LAST - 1, true);
    const Field unicode = NUMBER_FIELD(key.keysym.unicode, 0, 65535);
    const Field button = NUMBER_FIELD(button.button, 0, 255);
    const Field buttonX = NUMBER_FIELD(button.x, 0, MaxExtent);
    const Field buttonY = NUMBER_FIELD(button.y, 0, MaxExtent);
    const Field joystick = NUMBER_FIELD(jbutton.which, 0, JoystickCount - 1);
    const Field joyButton = NUMBER_FIELD(jbutton.button, 0, 255);
    static const auto* s_kinds = new std::vector<EventKind>{
        {"keydown", SDL_KEYDOWN, {key, unicode}},
        {"keyup", SDL_KEYUP, {key, unicode}},
        {"press", SDL_MOUSEBUTTONDOWN, {button, buttonX, buttonY}},
        {"release", SDL_MOUSEBUTTONUP, {button, buttonX, buttonY}},
        {"move",
         SDL_MOUSEMOTION,
         {NUMBER_FIELD(motion.x, 0, MaxExtent), NUMBER_FIELD(motion.y, 0, MaxExtent),
          NUMBER_FIELD(motion.xrel, -32768, 32767), NUMBER_FIELD(motion.yrel, -32768, 32767),
          NUMBER_FIELD(motion.state, 0, 255)}},
        {"axis",
         SDL_JOYAXISMOTION,
         {NUMBER_FIELD(jaxis.which, 0, JoystickCount - 1), NUMBER_FIELD(jaxis.axis, 0, 255),
          NUMBER_FIELD(jaxis.value, -32768, 32767)}},
        {"hat",
         SDL_JOYHATMOTION,
         {NUMBER_FIELD(jhat.which, 0, JoystickCount - 1), NUMBER_FIELD(jhat.hat, 0, 255),
          NUMBER_FIELD(jhat.value, 0, 15)}},
        {"joydown", SDL_JOYBUTTONDOWN, {joystick, joyButton}},
        {"joyup", SDL_JOYBUTTONUP, {joystick, joyButton}},
        {"focus",
         SDL_ACTIVEEVENT,
         {NUMBER_FIELD(active.gain, 0, 1), NUMBER_FIELD(active.state, 0, 7)}},
        {"resize",
         SDL_VIDEORESIZE,
         {NUMBER_FIELD(resize.w, 1, MaxExtent), NUMBER_FIELD(resize.h, 1, MaxExtent)}},
        {"expose", SDL_VIDEOEXPOSE, {}},
    };
    return *s_kinds;
}
#undef NUMBER_FIELD
#undef EVENT_FIELD

util::String PrintKey(int key)
{
    return Key::HasName(key) ? Key::GetKeyName(key) : "#" + util::ToString(key);
}

// What is wrong with a line, which whoever catches it numbers.
struct BadLine
{
    util::String what;
};

[[noreturn]] void Fail(const util::String& what)
{
    throw BadLine{what};
}

// One line, word by word.
class LineReader
{
public:
    explicit LineReader(const util::String& line)
        : m_line(line)
    {
    }

    bool IsAtEnd() const { return m_pos >= m_line.size(); }

    util::String ReadWord()
    {
        const size_t end = std::min(m_line.find(' ', m_pos), m_line.size());
        const util::String word = m_line.substr(m_pos, end - m_pos);
        m_pos = std::min(end + 1, m_line.size());
        if (word.empty())
            Fail("something is missing");
        return word;
    }

    template<typename T>
    T ReadNumber(T low, T high)
    {
        return ToNumber(ReadWord(), low, high);
    }

    int ReadKey(int low, int high)
    {
        const util::String word = ReadWord();
        // "#" alone is a key of its own.
        if (word.size() > 1 && word[0] == '#')
            return ToNumber(word.substr(1), low, high);
        int key = -1;
        if (Key::IsKeyName(word))
            key = Key::GetKeyFromName(word);
        if (key < low || key > high)
            Fail("\"" + util::Shorten(word, 50) + "\" is no key");
        return key;
    }

    util::String ReadQuoted()
    {
        util::String text;
        if (IsAtEnd() || m_line[m_pos++] != '"')
            Fail("a text in double quotes is missing");
        while (m_pos < m_line.size() && m_line[m_pos] != '"')
            text += m_line[m_pos] == '\\' ? ReadEscape() : m_line[m_pos++];
        if (m_pos >= m_line.size())
            Fail("the text has no closing quote");
        ++m_pos;
        if (!IsAtEnd() && m_line[m_pos++] != ' ')
            Fail("there is no blank after the text");
        return text;
    }

    void ExpectEnd() const
    {
        if (!IsAtEnd())
            Fail("\"" + util::Shorten(m_line.substr(m_pos), 50) + "\" is too much");
    }

private:
    template<typename T>
    static T ToNumber(const util::String& word, T low, T high)
    {
        T number = 0;
        const char* const end = word.data() + word.size();
        const auto result = std::from_chars(word.data(), end, number);
        if (result.ec == std::errc::result_out_of_range ||
            (result.ec == std::errc() && result.ptr == end && (number < low || number > high)))
            Fail(util::Shorten(word, 50) + " is not within " + util::ToString(low) + " to " +
                 util::ToString(high));
        if (result.ec != std::errc() || result.ptr != end)
            Fail("\"" + util::Shorten(word, 50) + "\" is no whole number");
        return number;
    }

    char ReadEscape()
    {
        const char kind = m_pos + 1 < m_line.size() ? m_line[m_pos + 1] : 0;
        m_pos += 2;
        switch (kind)
        {
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case '"':
        case '\\':
            return kind;
        case 'x':
        {
            int code = 0;
            const char* const digits = m_line.data() + std::min(m_pos, m_line.size());
            const char* const end =
                digits + std::min<size_t>(2, m_line.data() + m_line.size() - digits);
            const auto result = std::from_chars(digits, end, code, 16);
            if (result.ec == std::errc() && result.ptr == digits + 2 && code >= 0)
            {
                m_pos += 2;
                return static_cast<char>(code);
            }
            break;
        }
        }
        Fail("the text has a backslash that starts nothing");
    }

    const util::String& m_line;
    size_t m_pos = 0;
};

class RecordingParser
{
public:
    Recording Parse(const util::String& text)
    {
        int number = 0;
        for (size_t begin = 0;;)
        {
            const size_t end = text.find('\n', begin);
            if (end == util::String::npos)
                break; // not finished by whoever wrote it
            ++number;
            try
            {
                ReadLine(text.substr(begin, end - begin), number);
            }
            catch (BadLine& bad)
            {
                throw BadRecording("line " + util::ToString(number) + ": " + bad.what);
            }
            begin = end + 1;
        }
        if (number == 0)
            throw BadRecording("line 1: this is no recording");
        EndFrame();
        return std::move(m_recording);
    }

private:
    void ReadLine(const util::String& line, int number)
    {
        if (number == 1)
        {
            if (line == RecordingHead)
                return;
            Fail(util::starts_with(line, HeadWithoutVersion)
                     ? "this recording is of a version that is not known"
                     : "this is no recording");
        }
        if (line.empty() || line[0] == '#')
            return;
        LineReader reader(line);
        const util::String word = reader.ReadWord();
        if (!ReadRecord(word, reader) && !ReadEvent(word, reader))
            Fail("\"" + util::Shorten(word, 50) + "\" is not known");
        reader.ExpectEnd();
    }

    bool ReadRecord(const util::String& word, LineReader& reader)
    {
        if (word == "display" || word == "window")
        {
            const bool isDisplay = word == "display";
            (isDisplay ? m_recording.displayWidth : m_recording.windowWidth) =
                reader.ReadNumber(1, MaxExtent);
            (isDisplay ? m_recording.displayHeight : m_recording.windowHeight) =
                reader.ReadNumber(1, MaxExtent);
        }
        else if (word == "joystick")
            ReadJoystick(reader);
        else if (word == "frame")
        {
            EndFrame();
            m_isInFrame = true;
            m_frame.time = m_time = reader.ReadNumber(m_time, ~0u);
        }
        else if (word == "clock")
        {
            const unsigned reading = reader.ReadNumber(
                m_frame.clock.empty() ? 0u : m_frame.clock.back().reading + 1, ~0u);
            m_time = reader.ReadNumber(m_time, ~0u);
            m_frame.clock.push_back({reading, m_time});
        }
        else if (word == "mods")
        {
            NeedFrame();
            m_frame.mods = reader.ReadNumber(0, 65535);
        }
        else if (word == "mouse")
        {
            NeedFrame();
            m_frame.mouseX = reader.ReadNumber(0, MaxExtent);
            m_frame.mouseY = reader.ReadNumber(0, MaxExtent);
        }
        else if (word == "paste")
        {
            NeedFrame();
            m_frame.pastes.push_back(reader.ReadQuoted());
        }
        else if (word == "quit")
        {
            NeedFrame();
            m_frame.isQuit = true;
        }
        else
            return false;
        return true;
    }

    void ReadJoystick(LineReader& reader)
    {
        RecordedJoystick joystick;
        joystick.index = reader.ReadNumber(0, JoystickCount - 1);
        joystick.name = reader.ReadQuoted();
        while (!reader.IsAtEnd())
            joystick.axes.push_back(reader.ReadNumber(-32768, 32767));
        m_recording.joysticks.push_back(joystick);
    }

    bool ReadEvent(const util::String& word, LineReader& reader)
    {
        for (const EventKind& kind : EventKinds())
        {
            if (word != kind.name)
                continue;
            NeedFrame();
            RecordedEvent recorded = {};
            recorded.mods = m_frame.mods;
            recorded.event.type = kind.type;
            for (const Field& field : kind.fields)
                field.set(recorded.event, field.isKey ? reader.ReadKey(field.low, field.high)
                                                      : reader.ReadNumber(field.low, field.high));
            m_frame.events.push_back(recorded);
            return true;
        }
        return false;
    }

    void NeedFrame() const
    {
        if (!m_isInFrame)
            Fail("this stands before the first frame");
        if (m_frame.isQuit)
            Fail("this stands after the end of the session");
    }

    void EndFrame()
    {
        if (m_isInFrame)
            m_recording.frames.push_back(m_frame);
        else
            m_recording.start = m_frame;
        // What holds on goes on.
        RecordedFrame next;
        next.mods = m_frame.mods;
        next.mouseX = m_frame.mouseX;
        next.mouseY = m_frame.mouseY;
        m_frame = next;
    }

    Recording m_recording;
    RecordedFrame m_frame;
    bool m_isInFrame = false;
    unsigned m_time = 0; // the latest, in milliseconds
};
}

Recording ParseRecording(const util::String& text)
{
    return RecordingParser().Parse(text);
}

util::String PrintEvent(const SDL_Event& event)
{
    for (const EventKind& kind : EventKinds())
    {
        if (event.type != kind.type)
            continue;
        util::String line = kind.name;
        for (const Field& field : kind.fields)
        {
            const int value = field.get(event);
            line += " " + (field.isKey ? PrintKey(value) : util::ToString(value));
        }
        return line;
    }
    return "";
}

util::String PrintJoystick(const RecordedJoystick& joystick)
{
    util::String line = "joystick " + util::ToString(joystick.index) + " " + Quote(joystick.name);
    for (int axis : joystick.axes)
        line += " " + util::ToString(axis);
    return line;
}

util::String Quote(const util::String& text)
{
    util::String quoted = "\"";
    for (const char c : text)
        if (c == '\n')
            quoted += "\\n";
        else if (c == '\t')
            quoted += "\\t";
        else if (c == '"' || c == '\\')
            quoted += util::String("\\") + c;
        else if (c >= ' ' && c <= '~')
            quoted += c;
        else
        {
            char code[5];
            std::snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned char>(c));
            quoted += code;
        }
    return quoted + "\"";
}
}
