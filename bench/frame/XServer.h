// A screen for a machine without one.
#pragma once

namespace bench
{
/// Starts an Xvfb for as long as this process lives, and names it in DISPLAY. Does nothing where there
/// is a DISPLAY.
/// @return  whether there is one now
bool EnsureDisplay();
}
