// A driver that fails: GL reports an error in the hundredth call of glGetError. Stands before the
// library's own function.
#include <GL/gl.h>

extern "C" GLenum glGetError()
{
    static int s_calls = 0;
    return ++s_calls == 100 ? GL_INVALID_OPERATION : GL_NO_ERROR;
}
