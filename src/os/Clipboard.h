// The clipboard of an X11 desktop: the CLIPBOARD selection, which its owner serves to whoever asks, until
// another program takes it. ICCCM 2.0, section 2.
#pragma once

#include "util/String.h"

struct SDL_SysWMmsg;

namespace os
{
/// Puts the text there, as Latin-1 and as UTF-8.
/// @param text  Latin-1
/// @return false when there is no X11 window, when the selection can't be had, or when the text is too large to
///         be served: then nobody is served any
bool OwnClipboard(const util::String& text);

enum class ClipboardState
{
    Unknown, // there is no X11 window
    Ours,    // nobody has taken it since OwnClipboard
    Others,
    Nobodys
};
ClipboardState GetClipboardState();

/// Asks the owner, for half a second at most where it keeps silent.
/// @param text  Latin-1
/// @return      false when there is none, or none that is Latin-1
bool AskForClipboard(util::String& text);

/// Serves other programs. To be called with each message of the window system.
void ServeClipboard(const SDL_SysWMmsg& message);
}
