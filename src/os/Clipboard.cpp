#include "os/Clipboard.h"

#include "os/DisplayLock.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <vector>

namespace os
{
namespace
{
// Milliseconds: without a word from the owner, and for all that it has to say.
const Uint32 Patience = 500;
const Uint32 LongestTransfer = 2000;
const Uint32 PollInterval = 2;
const size_t MaxTextSize = size_t(64) << 20;

// A program that asked may be gone before it is served: that must not end this one.
class ErrorsIgnored
{
public:
    explicit ErrorsIgnored(Display* display)
        : m_display(display)
    {
        XSync(display, False);
        m_before = XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    }
    ~ErrorsIgnored()
    {
        XSync(m_display, False);
        XSetErrorHandler(m_before);
    }
    ErrorsIgnored(const ErrorsIgnored&) = delete;
    ErrorsIgnored& operator=(const ErrorsIgnored&) = delete;

private:
    Display* m_display;
    XErrorHandler m_before;
};

struct Atoms
{
    explicit Atoms(Display* display)
    {
        const char* names[] = {"CLIPBOARD", "TARGETS", "UTF8_STRING",
                               "TEXT",      "INCR",    "QUIB_CLIPBOARD"};
        Atom* const atoms[] = {&clipboard, &targets, &utf8, &text, &incremental, &property};
        for (int i = 0; i < 6; ++i)
            *atoms[i] = XInternAtom(display, names[i], False);
    }

    Atom clipboard, targets, utf8, text, incremental, property;
};

// What is served, and by which window. The window is ours alone, hidden, and outlives that of SDL, which
// is made anew with each size.
struct Owner
{
    Display* display = nullptr;
    Window window = 0;
    util::String text; // Latin-1
    bool isServed = true;
};
Owner s_owner;

Window GetWindow(Display* display)
{
    if (s_owner.display != display) // SDL has opened another one
    {
        s_owner = Owner();
        s_owner.display = display;
        s_owner.window =
            XCreateSimpleWindow(display, DefaultRootWindow(display), -10, -10, 1, 1, 0, 0, 0);
        // To be told of the pieces of a long text.
        XSelectInput(display, s_owner.window, PropertyChangeMask);
    }
    return s_owner.window;
}

/// Waits for an event of our window.
bool WaitFor(Display* display, int type, XEvent& event)
{
    for (const Uint32 start = SDL_GetTicks(); SDL_GetTicks() - start < Patience;)
    {
        if (XCheckTypedWindowEvent(display, s_owner.window, type, &event))
            return true;
        SDL_Delay(PollInterval);
    }
    return false;
}

/// Reads the property and deletes it, which tells the owner to go on.
/// @return its type; 0 when there is none
Atom TakeProperty(Display* display, Atom property, util::String& bytes)
{
    Atom type = 0;
    unsigned long left = 1;
    for (long offset = 0; left > 0 && bytes.size() < MaxTextSize;)
    {
        int format = 0;
        unsigned long count = 0;
        unsigned char* data = nullptr;
        if (XGetWindowProperty(display, s_owner.window, property, offset, 1 << 16, False,
                               AnyPropertyType, &type, &format, &count, &left, &data) != Success)
            break;
        if (format == 8)
            bytes.append(reinterpret_cast<const char*>(data), count);
        offset += static_cast<long>(count * format / 32);
        XFree(data);
        if (count == 0)
            break;
    }
    XDeleteProperty(display, s_owner.window, property);
    return type;
}

/// A long text comes piece by piece, the last of which is empty.
bool TakePieces(Display* display, Atom property, util::String& bytes)
{
    XEvent event;
    const Uint32 start = SDL_GetTicks();
    while (bytes.size() < MaxTextSize && SDL_GetTicks() - start < LongestTransfer &&
           WaitFor(display, PropertyNotify, event))
    {
        if (event.xproperty.atom != property || event.xproperty.state != PropertyNewValue)
            continue;
        const size_t before = bytes.size();
        TakeProperty(display, property, bytes);
        if (bytes.size() == before)
            return true;
    }
    return false;
}

/// @return false when the owner has nothing of that kind
bool Convert(Display* display, const Atoms& atoms, Atom target, util::String& bytes)
{
    XEvent event;
    while (XCheckTypedWindowEvent(display, s_owner.window, SelectionNotify, &event) ||
           XCheckTypedWindowEvent(display, s_owner.window, PropertyNotify, &event))
        ; // answers that came too late
    XConvertSelection(display, atoms.clipboard, target, atoms.property, s_owner.window,
                      CurrentTime);
    if (!WaitFor(display, SelectionNotify, event) || event.xselection.property == None)
        return false;
    // The news of the property has come with it, and is not that of a piece.
    while (XCheckTypedWindowEvent(display, s_owner.window, PropertyNotify, &event))
        ;
    util::String whole;
    if (TakeProperty(display, atoms.property, whole) != atoms.incremental)
    {
        bytes = whole;
        return true;
    }
    bytes.clear();
    return TakePieces(display, atoms.property, bytes);
}

void SetProperty(const XSelectionRequestEvent& request, Atom property, Atom type,
                 const util::String& bytes)
{
    XChangeProperty(request.display, request.requestor, property, type, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<int>(bytes.size()));
}

/// @return false when the text is not to be had as that
bool Serve(const XSelectionRequestEvent& request, const Atoms& atoms, Atom property)
{
    if (!s_owner.isServed)
        return false;
    if (request.target == atoms.targets)
    {
        const Atom targets[] = {atoms.targets, atoms.utf8, XA_STRING, atoms.text};
        XChangeProperty(request.display, request.requestor, property, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(targets), 4);
    }
    else if (request.target == atoms.utf8)
        SetProperty(request, property, atoms.utf8, util::Latin1ToUTF8(s_owner.text));
    else if (request.target == XA_STRING || request.target == atoms.text)
        SetProperty(request, property, XA_STRING, s_owner.text);
    else
        return false;
    return true;
}
}

/// Whether the text goes in one request, twice as long as UTF-8 may make it. Piece by piece it would go
/// whatever its size, but scenes of millions of bytes fit.
static bool FitsRequest(Display* display, const util::String& text)
{
    const long extended = XExtendedMaxRequestSize(display);
    const long most = extended > 0 ? extended : XMaxRequestSize(display); // in units of four bytes
    return text.size() * 2 + 64 <= size_t(most) * 4;
}

bool OwnClipboard(const util::String& text)
{
    const DisplayLock lock;
    if (!lock.IsOpen())
        return false;
    Display* const display = lock.GetDisplay();
    const Window window = GetWindow(display);
    const Atom clipboard = Atoms(display).clipboard;
    // One that is too large is ours all the same: nobody must get what was copied before, nor a program that
    // looks after what has no owner bring that back.
    s_owner.isServed = FitsRequest(display, text);
    s_owner.text = s_owner.isServed ? text : "";
    XSetSelectionOwner(display, clipboard, window, CurrentTime);
    return s_owner.isServed && XGetSelectionOwner(display, clipboard) == window;
}

ClipboardState GetClipboardState()
{
    const DisplayLock lock;
    if (!lock.IsOpen())
        return ClipboardState::Unknown;
    Display* const display = lock.GetDisplay();
    const Window window = GetWindow(display);
    const Window owner = XGetSelectionOwner(display, Atoms(display).clipboard);
    if (owner == None)
        return ClipboardState::Nobodys;
    return owner == window ? ClipboardState::Ours : ClipboardState::Others;
}

bool AskForClipboard(util::String& text)
{
    const DisplayLock lock;
    if (!lock.IsOpen())
        return false;
    Display* const display = lock.GetDisplay();
    GetWindow(display);
    const Atoms atoms(display);
    const ErrorsIgnored ignored(display);
    util::String bytes;
    if (Convert(display, atoms, atoms.utf8, bytes))
        return util::UTF8ToLatin1(bytes, text);
    return Convert(display, atoms, XA_STRING, text);
}

void ServeClipboard(const SDL_SysWMmsg& message)
{
    if (message.subsystem != SDL_SYSWM_X11 || message.event.xevent.type != SelectionRequest)
        return;
    const DisplayLock lock;
    const XSelectionRequestEvent& request = message.event.xevent.xselectionrequest;
    if (!lock.IsOpen() || request.display != s_owner.display || request.owner != s_owner.window)
        return;
    const ErrorsIgnored ignored(request.display);
    // Old programs name no property: it is the target then.
    const Atom property = request.property != None ? request.property : request.target;
    XEvent answer = {};
    answer.xselection.type = SelectionNotify;
    answer.xselection.display = request.display;
    answer.xselection.requestor = request.requestor;
    answer.xselection.selection = request.selection;
    answer.xselection.target = request.target;
    answer.xselection.time = request.time;
    answer.xselection.property = Serve(request, Atoms(request.display), property) ? property : None;
    XSendEvent(request.display, request.requestor, False, NoEventMask, &answer);
}
}
