#include "os/Platform.h"

#include "logging/Log.h"
#include "os/Clipboard.h"

#include <SDL.h>
#include <boost/filesystem.hpp>

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <iostream>

namespace fs = boost::filesystem;

namespace os
{
namespace
{
math::TVector2<int> s_displaySize(0, 0);
util::String s_clipboard;
}

util::String CalcDataDir(const util::String& argv0)
{
    boost::system::error_code error;
    if (fs::is_directory("data", error))
        return "";
    // The link that the kernel keeps names the program even when argv[0] came through PATH.
    fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error)
        program = argv0;
    const fs::path folder = program.parent_path();
    if (!folder.empty() && fs::is_directory(folder / "data", error))
        return folder.string() + "/";
    return "";
}

void NoteDisplaySize()
{
    if (const SDL_VideoInfo* info = SDL_GetVideoInfo())
        s_displaySize = math::TVector2<int>(info->current_w, info->current_h);
}

bool GetDisplaySize(math::TVector2<int>& size)
{
    if (s_displaySize.x <= 0 || s_displaySize.y <= 0)
        return false;
    size = s_displaySize;
    return true;
}

void SetDisplaySize(const math::TVector2<int>& size)
{
    s_displaySize = size;
}

void SetClipboardText(const util::String& text)
{
    // Kept here, too: without a desktop copy and paste work inside the program.
    s_clipboard = text;
    if (!OwnClipboard(text) && GetClipboardState() != ClipboardState::Unknown)
        std::cerr << "Unable to write text to clipboard!" << std::endl;
}

util::String GetClipboardText()
{
    const ClipboardState state = GetClipboardState();
    if (state == ClipboardState::Others)
    {
        util::String text;
        if (AskForClipboard(text))
            return text;
        Log(logging::LogError, "The clipboard holds no text in Latin-1");
        return "";
    }
    // Nobody's is what another program took before it ended.
    return state == ClipboardState::Nobodys ? "" : s_clipboard;
}

bool TryLock(const util::String& path)
{
    // Never closed: the lock goes with the process, however that ends.
    const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    return file < 0 || ::flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool ShowErrorPopup(const util::String& title, const util::String& message)
{
    std::cerr << title << ": " << message << std::endl;
    return false;
}
}
