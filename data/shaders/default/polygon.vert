#version 120
// A polygon, from a map of the distances to its outline.
//
// gl_Vertex           the corners of the map, in the polygon's own frame
// gl_MultiTexCoord0   (0, 0) to (1, 1) over the map

varying vec2 place; // in the map

void main()
{
    place = gl_MultiTexCoord0.xy;
    gl_Position = ftransform();
}
