// The whole of what the program asks of the desktop beyond SDL.
#pragma once

#include "math/Vector.h"
#include "util/String.h"

namespace os
{
/// The work directory: "" (the current one) when "data" lies there, else the folder of the executable
/// when "data" lies beside it, else "". Ends in a slash when not "".
util::String CalcDataDir(const util::String& argv0);

/// The size of the main screen in pixels, as it was right after SDL came up; false when unknown.
bool GetDisplaySize(math::TVector2<int>& size);
/// Reads and keeps the display size: once a window exists SDL reports the window instead.
void NoteDisplaySize();
/// What is to be told from now on; 0 for unknown.
void SetDisplaySize(const math::TVector2<int>& size);

/// Whether other windows may shine through ours where it has an alpha below 1; true when nobody can tell.
/// A window with no more bits a pixel than colours take has its alpha to itself.
bool MayShineThrough();

/// Which of the mouse's buttons are down as the desktop has it, whoever gets their events.
/// @param held  SDL's bits of the left, middle and right one
/// @return false when nobody can tell
bool GetHeldMouseButtons(unsigned& held);

/// Latin-1. Where there is no desktop, or it refuses with a line on standard error, the text reaches this
/// program only.
void SetClipboardText(const util::String& text);
/// Latin-1; "" when there is none.
util::String GetClipboardText();

/// Takes an advisory lock on the file, made when missing, and holds it until the process ends.
/// @return false when another process holds it; a file that can't be made locks nobody out
bool TryLock(const util::String& path);

/// A modal dialog with the buttons "Debug" and "Cancel"; true exactly when the second was chosen.
/// Here: the text on standard error, and false.
bool ShowErrorPopup(const util::String& title, const util::String& message);
}
