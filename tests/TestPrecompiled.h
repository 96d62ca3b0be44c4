// Compiled once for all test programs: GoogleTest is slow to read.
#pragma once

#include "Precompiled.h"

#include <gtest/gtest.h>
