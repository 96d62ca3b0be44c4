// The clipboard between programs: Quib on one side, on the other either a second Quib or a program that
// speaks to the X server itself, well or badly.
#include "os/Clipboard.h"

#include "FreshProcess.h"
#include "TestSupport.h"
#include "input/InputEvent.h"
#include "os/Platform.h"
#include "window/InputWindow.h"
#include "window/XServer.h"

#include <SDL.h>
#include <SDL_syswm.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <gtest/gtest.h>

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <map>

namespace
{
const std::string Umlauts = "caf\xe9 \xc4\xd6\xdc \xff\xa0\x80\n\t";
const std::string UmlautsAsUTF8 =
    "caf\xc3\xa9 \xc3\x84\xc3\x96\xc3\x9c \xc3\xbf\xc2\xa0\xc2\x80\n\t";

std::string LargeText(size_t size)
{
    std::string text;
    while (text.size() < size)
        text += "Scene.addBox { pos = [" + std::to_string(text.size()) + ".0, 1.0] }; // \xe9\n";
    return text.substr(0, size);
}

// Runs until it is killed. To be made before the process has a connection to the server of its own, which
// the two would share.
class ChildProcess
{
public:
    using Function = std::function<void(const std::function<void()>& ready)>;

    explicit ChildProcess(const Function& function)
    {
        if (pipe(m_toChild) != 0 || pipe(m_fromChild) != 0)
            abort();
        m_pid = fork();
        if (m_pid == 0)
        {
            char c = 0;
            (void)!read(m_toChild[0], &c, 1);
            function([this] { (void)!write(m_fromChild[1], "!", 1); });
            _exit(0);
        }
    }
    ~ChildProcess() { End(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits until the function calls what it is handed.
    void Start()
    {
        (void)!write(m_toChild[1], "!", 1);
        struct pollfd fd = {m_fromChild[0], POLLIN, 0};
        EXPECT_EQ(1, poll(&fd, 1, 30000));
    }
    void End()
    {
        if (m_pid <= 0)
            return;
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
        m_pid = 0;
        for (int end : {m_toChild[0], m_toChild[1], m_fromChild[0], m_fromChild[1]})
            close(end);
    }

private:
    int m_toChild[2], m_fromChild[2];
    pid_t m_pid;
};

// Hands the messages of the window system on, as the program's shell does.
class Server final : public input::InputListener
{
public:
    Server()
        : InputListener(50)
    {
    }
    void OnOtherEvent(const input::InputEvent& event) override
    {
        if (event.GetEvent().type == SDL_SYSWMEVENT)
            os::ServeClipboard(*event.GetEvent().syswm.msg);
    }
};

class Quib : public test::InputWindow
{
public:
    explicit Quib(const std::string& display)
        : InputWindow(display)
    {
        input::Input::GetInstancePtr()->AddListener(
            util::WeakPtr<input::InputListener>(m_server.get()));
    }

private:
    util::SharedPtr<Server> m_server = QUIB_NEW Server;
};

// A second Quib, which has copied the text and runs on.
ChildProcess::Function RunningQuib(const std::string& display, const std::string& text)
{
    return [=](const std::function<void()>& ready)
    {
        Quib quib(display);
        input::Input::GetInstancePtr()->SetClipboardText(text);
        ready();
        quib.RunUntil([] { return false; });
    };
}

// Another program, by Xlib alone.
class Client
{
public:
    explicit Client(const std::string& name)
        : display(XOpenDisplay(name.c_str()))
        , clipboard(Intern("CLIPBOARD"))
        , utf8(Intern("UTF8_STRING"))
        , property(Intern("SOME_PROPERTY"))
        , window(XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0))
    {
        XSelectInput(display, window, PropertyChangeMask);
    }
    ~Client() { XCloseDisplay(display); }

    Atom Intern(const char* name) { return XInternAtom(display, name, False); }

    void Ask(Atom target, Atom intoProperty)
    {
        XConvertSelection(display, clipboard, target, intoProperty, window, CurrentTime);
        XFlush(display);
    }
    /// The answer that Quib gives. @return false when it refuses
    bool Receive(Quib& quib, std::string& bytes, Atom* type = nullptr, int* format = nullptr)
    {
        XEvent event = {};
        quib.RunUntil([&]
                      { return XCheckTypedWindowEvent(display, window, SelectionNotify, &event); });
        if (event.xselection.property == None)
            return false;
        Atom actualType = 0;
        int actualFormat = 0;
        unsigned long count = 0, left = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(display, window, event.xselection.property, 0, 1 << 24, True,
                           AnyPropertyType, &actualType, &actualFormat, &count, &left, &data);
        bytes.assign(reinterpret_cast<char*>(data),
                     count * (actualFormat == 32 ? sizeof(long) : actualFormat / 8));
        XFree(data);
        if (type)
            *type = actualType;
        if (format)
            *format = actualFormat;
        return true;
    }
    std::string Paste(Quib& quib, Atom target)
    {
        Ask(target, property);
        std::string bytes;
        return Receive(quib, bytes) ? bytes : "refused";
    }

    void Answer(const XSelectionRequestEvent& request, Atom asProperty)
    {
        XEvent answer = {};
        answer.xselection.type = SelectionNotify;
        answer.xselection.requestor = request.requestor;
        answer.xselection.selection = request.selection;
        answer.xselection.target = request.target;
        answer.xselection.time = request.time;
        answer.xselection.property = asProperty;
        XSendEvent(display, request.requestor, False, NoEventMask, &answer);
        XFlush(display);
    }
    void Put(const XSelectionRequestEvent& request, Atom type, int format, const std::string& bytes)
    {
        XChangeProperty(
            display, request.requestor, request.property, type, format, PropModeReplace,
            reinterpret_cast<const unsigned char*>(bytes.data()),
            static_cast<int>(bytes.size() / (format == 32 ? sizeof(long) : format / 8)));
    }

    Display* display;
    Atom clipboard, utf8, property;
    Window window;
};

using Serve = std::function<void(Client&, const XSelectionRequestEvent&)>;

// Another program that owns the clipboard and answers as the function does.
ChildProcess::Function Owner(const std::string& display, const Serve& serve)
{
    return [=](const std::function<void()>& ready)
    {
        Client client(display);
        XSetSelectionOwner(client.display, client.clipboard, client.window, CurrentTime);
        XSync(client.display, False);
        ready();
        for (XEvent event;;)
        {
            XNextEvent(client.display, &event);
            if (event.type == SelectionRequest)
                serve(client, event.xselectionrequest);
        }
    };
}

/// One that has its text in some forms, and refuses the others.
Serve Forms(const std::map<std::string, std::string>& forms)
{
    return [=](Client& client, const XSelectionRequestEvent& request)
    {
        char* const name = XGetAtomName(client.display, request.target);
        const auto form = forms.find(name);
        XFree(name);
        if (form != forms.end())
            client.Put(request, request.target, 8, form->second);
        client.Answer(request, form != forms.end() ? request.property : None);
    };
}

/// Piece by piece, as what is long.
Serve Pieces(const std::vector<std::string>& pieces, unsigned pause = 0, bool isForever = false)
{
    return [=](Client& client, const XSelectionRequestEvent& request)
    {
        XSelectInput(client.display, request.requestor, PropertyChangeMask);
        const long size = 3;
        client.Put(request, client.Intern("INCR"), 32,
                   std::string(reinterpret_cast<const char*>(&size), sizeof(size)));
        client.Answer(request, request.property);
        for (size_t i = 0; i < pieces.size() || isForever; ++i)
        {
            XEvent event;
            do
                XNextEvent(client.display, &event);
            while (event.type != PropertyNotify || event.xproperty.window != request.requestor ||
                   event.xproperty.state != PropertyDelete);
            usleep(pause * 1000);
            client.Put(request, request.target, 8, pieces[i % pieces.size()]);
            XFlush(client.display);
        }
    };
}

class ClipboardTest : public testing::Test
{
protected:
    /// What Quib pastes of that owner's.
    /// @param isReported  a line of the log tells the user why there is none
    void ExpectPaste(const std::string& expected, const Serve& serve, bool isReported = false)
    {
        ChildProcess owner(Owner(server.Display(), serve));
        owner.Start();
        EXPECT_FINE_IN_FRESH_PROCESS({
            Quib quib(server.Display());
            const test::LogCapture log(logging::LogError);
            EXPECT_EQ(expected, input::Input::GetInstancePtr()->GetClipboardText());
            EXPECT_EQ(isReported, log.Has("The clipboard holds no text in Latin-1"));
        });
    }
    void ExpectNothing(const Serve& serve) { ExpectPaste("", serve, true); }

    test::XServer server{"640x480x24"};
};
}

TEST_F(ClipboardTest, WhatOneQuibCopiesAnotherPastes)
{
    for (const std::string& text : {Umlauts, LargeText(1 << 20), LargeText(7 << 20), std::string()})
    {
        ChildProcess other(RunningQuib(server.Display(), text));
        other.Start();
        EXPECT_FINE_IN_FRESH_PROCESS({
            Quib quib(server.Display());
            EXPECT_TRUE(text == input::Input::GetInstancePtr()->GetClipboardText()) << text.size();
        });
    }
}

TEST_F(ClipboardTest, TheLatestCopyOfAllCounts)
{
    ChildProcess other(RunningQuib(server.Display(), "another's"));
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        os::SetClipboardText("mine");
        EXPECT_EQ("mine", os::GetClipboardText());
        other.Start();
        EXPECT_EQ("another's", os::GetClipboardText());
        os::SetClipboardText("mine again");
        EXPECT_EQ("mine again", os::GetClipboardText());
    });
    other.End();
}

TEST_F(ClipboardTest, OtherProgramsAreServedInTheFormsTheyAskFor)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        Client client(server.Display());
        os::SetClipboardText(Umlauts);
        EXPECT_EQ(UmlautsAsUTF8, client.Paste(quib, client.utf8));
        EXPECT_EQ(Umlauts, client.Paste(quib, XA_STRING));
        EXPECT_EQ("refused", client.Paste(quib, XA_INTEGER));

        std::string bytes;
        Atom type = 0;
        int format = 0;
        client.Ask(client.Intern("TEXT"), client.property);
        ASSERT_TRUE(client.Receive(quib, bytes, &type));
        EXPECT_EQ(Umlauts, bytes);
        EXPECT_EQ(XA_STRING, type) << "the owner chooses, and says what";

        client.Ask(client.Intern("TARGETS"), client.property);
        ASSERT_TRUE(client.Receive(quib, bytes, &type, &format));
        EXPECT_EQ(XA_ATOM, type);
        EXPECT_EQ(32, format);
        const Atom* const targets = reinterpret_cast<const Atom*>(bytes.data());
        const std::vector<Atom> list(targets, targets + bytes.size() / sizeof(Atom));
        EXPECT_EQ((std::vector<Atom>{client.Intern("TARGETS"), client.utf8, XA_STRING,
                                     client.Intern("TEXT")}),
                  list);

        os::SetClipboardText("");
        EXPECT_EQ("", client.Paste(quib, client.utf8)) << "an empty text is one too";
    });
}

TEST_F(ClipboardTest, OldProgramsThatNameNoPropertyAreServed)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        Client client(server.Display());
        os::SetClipboardText("text");
        client.Ask(XA_STRING, None);
        std::string bytes;
        ASSERT_TRUE(client.Receive(quib, bytes));
        EXPECT_EQ("text", bytes);
    });
}

TEST_F(ClipboardTest, AProgramThatAsksAndDiesEndsNothing)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        os::SetClipboardText("text");
        for (int i = 0; i < 3; ++i)
        {
            Client doomed(server.Display());
            doomed.Ask(XA_STRING, doomed.property);
        }
        Client client(server.Display());
        EXPECT_EQ("text", client.Paste(quib, XA_STRING));
    });
}

TEST_F(ClipboardTest, RequestsThatNameNonsenseAreRefusedOrIgnored)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        Client client(server.Display());
        os::SetClipboardText("text");
        SDL_SysWMinfo info;
        SDL_VERSION(&info.version);
        ASSERT_EQ(1, SDL_GetWMInfo(&info));
        const Window owner = XGetSelectionOwner(client.display, client.clipboard);
        for (const Window asked : {owner, Window(info.info.x11.window)})
            for (const unsigned long number : {0ul, 0x1ffffffful, 0xfffffffful})
            {
                XEvent event = {};
                event.xselectionrequest.type = SelectionRequest;
                event.xselectionrequest.owner = asked;
                event.xselectionrequest.requestor = number;
                event.xselectionrequest.selection = number;
                event.xselectionrequest.target = number == 0 ? XA_STRING : number;
                event.xselectionrequest.property = number;
                XSendEvent(client.display, asked, False, NoEventMask, &event);
            }
        EXPECT_EQ("text", client.Paste(quib, XA_STRING));
    });
}

TEST_F(ClipboardTest, AWindowMadeAnewKeepsTheText)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        Client client(server.Display());
        os::SetClipboardText("text");
        ASSERT_TRUE(SDL_SetVideoMode(200, 150, 0, SDL_SWSURFACE | SDL_NOFRAME));
        EXPECT_EQ("text", client.Paste(quib, XA_STRING));
        EXPECT_EQ("text", os::GetClipboardText());
    });
}

TEST_F(ClipboardTest, TextOfOtherProgramsIsPasted)
{
    ExpectPaste(Umlauts, Forms({{"UTF8_STRING", UmlautsAsUTF8}, {"STRING", "the lesser form"}}));
    ExpectPaste(Umlauts, Forms({{"STRING", Umlauts}}));
    ExpectPaste("", Forms({{"UTF8_STRING", ""}}));
    ExpectNothing(Forms({{"image/png", "\x89PNG"}}));
    ExpectPaste(LargeText(5 << 20), Forms({{"STRING", LargeText(5 << 20)}}));
}

TEST_F(ClipboardTest, TextBeyondLatin1ReadsAsNone)
{
    ExpectNothing(Forms({{"UTF8_STRING", "10 \xe2\x82\xac"}, {"STRING", "10 ?"}}));
    ExpectNothing(Forms({{"UTF8_STRING", "no UTF-8 \xff"}}));
    ExpectNothing(Forms({{"UTF8_STRING", "cut off \xc3"}}));
}

TEST_F(ClipboardTest, AnEmptyClipboardReadsAsNone)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        EXPECT_EQ("", os::GetClipboardText());
    });
}

TEST_F(ClipboardTest, LongTextMayComePieceByPiece)
{
    const std::string text = LargeText(100000), piece = util::Latin1ToUTF8(text);
    ExpectPaste(text + "and " + text, Pieces({piece, "and ", piece, ""}));
    ExpectPaste("", Pieces({""}));
}

TEST_F(ClipboardTest, AnOwnerThatNeverEndsIsLeftAlone)
{
    // It would hold the program for as long as it likes.
    const time_t start = time(nullptr);
    ExpectNothing(Pieces({"drip"}, 200, true));
    EXPECT_LT(time(nullptr) - start, 10);
}

TEST_F(ClipboardTest, AnOwnerThatKeepsSilentOrBreaksOffGivesNothing)
{
    ExpectNothing([](Client&, const XSelectionRequestEvent&) {});
    ExpectNothing(Pieces({"a beginning"}));
    ExpectNothing([](Client&, const XSelectionRequestEvent&) { _exit(0); });
}

TEST_F(ClipboardTest, AnOwnerThatSaysWhatIsNotTrueGivesNothing)
{
    // It has answered, and there is no property.
    ExpectPaste("", [](Client& client, const XSelectionRequestEvent& request)
                { client.Answer(request, request.property); });
    // Numbers in place of a text.
    ExpectPaste("",
                [](Client& client, const XSelectionRequestEvent& request)
                {
                    client.Put(request, client.utf8, 32, std::string(10 * sizeof(long), 'x'));
                    client.Answer(request, request.property);
                });
}

TEST_F(ClipboardTest, WhatADeadProgramHadCopiedIsGone)
{
    ChildProcess other(
        Owner(server.Display(), [](Client&, const XSelectionRequestEvent&) { _exit(0); }));
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        os::SetClipboardText("mine");
        other.Start();
        EXPECT_EQ("", os::GetClipboardText()) << "it dies when it is asked";
        EXPECT_EQ("", os::GetClipboardText()) << "nobody has any";
        os::SetClipboardText("mine again");
        EXPECT_EQ("mine again", os::GetClipboardText());
    });
}

TEST_F(ClipboardTest, TextTooLargeForTheDesktopStaysInsideTheProgram)
{
    ChildProcess other(RunningQuib(server.Display(), "another's"));
    EXPECT_FINE_IN_FRESH_PROCESS({
        Quib quib(server.Display());
        Client client(server.Display());
        os::SetClipboardText("small");
        const std::string large(20000000, 'x');
        testing::internal::CaptureStderr();
        os::SetClipboardText(large);
        EXPECT_EQ("Unable to write text to clipboard!\n", testing::internal::GetCapturedStderr());
        EXPECT_TRUE(os::GetClipboardText() == large);
        EXPECT_EQ("refused", client.Paste(quib, XA_STRING)) << "what was copied before is gone";
        other.Start();
        EXPECT_EQ("another's", os::GetClipboardText());
        testing::internal::CaptureStderr();
        os::SetClipboardText(large);
        testing::internal::GetCapturedStderr();
        EXPECT_TRUE(os::GetClipboardText() == large) << "though another had it";
    });
    other.End();
}

TEST_F(ClipboardTest, WithoutX11TextStaysInsideTheProgram)
{
    EXPECT_FINE_IN_FRESH_PROCESS({
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        ASSERT_EQ(0, SDL_Init(SDL_INIT_VIDEO | SDL_INIT_NOPARACHUTE));
        ASSERT_TRUE(SDL_SetVideoMode(100, 80, 0, SDL_SWSURFACE));
        testing::internal::CaptureStderr();
        EXPECT_EQ("", os::GetClipboardText());
        os::SetClipboardText(Umlauts);
        EXPECT_EQ(Umlauts, os::GetClipboardText());
        EXPECT_EQ("", testing::internal::GetCapturedStderr());
    });
}
