// Has TestPrecompiled.h compiled, for all test programs.
