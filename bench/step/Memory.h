// What a world takes of memory.
#pragma once

namespace bench
{
/// Prints the bytes per body, contact and particle of Quib. To be called before anything else has made
/// objects that later ones could take the place of.
void PrintMemory();
}
