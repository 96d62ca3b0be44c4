#version 120
// The surface of the water, over the whole screen.
//
// gl_Vertex           the screen
// gl_MultiTexCoord0   the same place in the field

varying vec2 place;  // in the field
varying vec2 across; // the same in the viewport, 0 to 1

void main()
{
    place = gl_MultiTexCoord0.xy;
    gl_Position = ftransform();
    across = 0.5 * gl_Position.xy / gl_Position.w + 0.5;
}
