// The program with a window. All of it is SDL_main; SDL's own main is not linked.
#include "app/Startup.h"

int main(int argc, char** argv)
{
    return SDL_main(argc, argv);
}
