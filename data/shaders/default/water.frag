#version 120
// The surface of the water: where the field of all drops exceeds the cutoff. See water.vert.
//
// Alpha holds the field, 0 to 1. It is full a few pixels below the surface. Green holds it many times
// coarser and so tells the depth from there on, but wraps around in the middle of each drop.

uniform sampler2D Field; // unit 0
uniform float Cutoff;
uniform vec4 Color;

varying vec2 place; // in the field

void main()
{
    vec4 field = texture2D(Field, place);
    // In pixels, by the field's slope. At a high zoom it has steps of more than a pixel.
    float slope = max(length(vec2(dFdx(field.a), dFdy(field.a))), 0.005);
    float depth = (field.a - Cutoff) / slope + 0.5;
    if (depth <= 0.0)
        discard;

    float rim = clamp(1.0 - depth / 3.5, 0.0, 1.0);
    float deep = clamp(field.g * 3.0, 0.0, 1.0);
    vec3 color = mix(Color.rgb, vec3(1.0), 0.5 * rim) * (1.0 - 0.3 * deep);
    gl_FragColor = vec4(color, Color.a * min(depth, 1.0));
}
