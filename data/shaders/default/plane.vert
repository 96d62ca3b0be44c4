#version 120
// A half plane of earth.
//
// gl_Vertex   any outline around what is to be seen of it; in GUI space once gl_ModelViewMatrix is applied

uniform vec3 Plane; // the unit normal, away from the earth, and the distance: normal * p + distance = 0, in GUI space

varying float height; // over the earth, in GUI units

void main()
{
    height = dot(Plane, vec3((gl_ModelViewMatrix * gl_Vertex).xy, 1.0));
    gl_Position = ftransform();
}
