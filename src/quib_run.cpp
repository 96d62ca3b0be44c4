#include "app/HeadlessRunner.h"

int main(int argc, char** argv)
{
    return app::RunHeadless(argc, argv);
}
