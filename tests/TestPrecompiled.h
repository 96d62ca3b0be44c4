// Compiled once for each test program: GoogleTest is slow to read.
#pragma once

#include "Precompiled.h"

#include <gtest/gtest.h>
