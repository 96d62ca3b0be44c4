#version 120
// The surface of the water: where the field of all drops exceeds the cutoff. See water.vert.
//
// Red holds the field, 0 to 1, as alpha does where the window has one. It is full a few pixels below the
// surface. Green holds it many times coarser and so tells the depth from there on, but wraps around in the
// middle of each drop.

uniform sampler2D Field; // unit 0
uniform float Cutoff;
uniform vec4 Color;

varying vec2 place; // in the field

void main()
{
    vec4 field = texture2D(Field, place);
    // In pixels, by the field's slope. At a high zoom it has steps of more than a pixel.
    vec2 rise = vec2(dFdx(field.r), dFdy(field.r));
    float slope = max(length(rise), 0.005);
    float depth = (field.r - Cutoff) / slope + 0.5;
    // At a cutoff of 0 there is none where no drop is, nor half a pixel around.
    if (depth <= 0.0 || field.r <= min(Cutoff, 0.0))
        discard;

    // Lit from above: a surface that looks down has half of the rim.
    float rim = clamp(1.6 - depth * 0.4, 0.0, 1.0) * (0.65 - 0.3 * rise.y / slope);
    float dark = 0.1 * clamp(field.g * 8.0, 0.0, 1.0) + 0.15 * field.g;
    vec3 color = mix(Color.rgb * (1.0 - dark), vec3(0.9, 0.98, 1.0), rim);
    gl_FragColor = vec4(color, min(Color.a * (1.0 + 0.4 * rim), 1.0) * min(depth, 1.0));
}
