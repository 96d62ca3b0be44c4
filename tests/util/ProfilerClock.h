// The machine's clock, which stands still in this test program unless told.
#pragma once

namespace test
{
extern unsigned g_milliseconds;
}
