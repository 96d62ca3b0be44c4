#version 120
// The surface of the water, over the whole screen.
//
// gl_Vertex           the screen
// gl_MultiTexCoord0   the same place in the field

varying vec2 place; // in the field

void main()
{
    place = gl_MultiTexCoord0.xy;
    gl_Position = ftransform();
}
