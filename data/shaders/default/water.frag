#version 120
// The surface of the water: where the field of all drops exceeds the cutoff. See water.vert.
//
// Red holds the field, 0 to 1, as alpha does where the window has one. It is full a few pixels below the
// surface, and from far within one. Green holds it many times coarser and so tells the depth from there on,
// but wraps around in the middle of each drop.

uniform sampler2D Field; // unit 0
uniform float Cutoff;
uniform vec4 Color;

varying vec2 place;  // in the field
varying vec2 across; // the same in the viewport, 0 to 1

vec4 field;
float slope;
vec2 pixel; // in the field

// Whether there is no water so many pixels away, as a share.
float IsDry(vec2 offset)
{
    // Beyond the viewport and beyond the texture there is no field.
    vec2 limit = min(place / across, vec2(1.0));
    float there = texture2D(Field, clamp(place + offset * pixel, 0.5 * pixel, limit - 0.5 * pixel)).r;
    float steep = max(slope, (field.r - there) / length(offset));
    return clamp((Cutoff - there) / steep + 0.5, 0.0, 1.0);
}

void main()
{
    field = texture2D(Field, place);
    // Slopes are taken while the neighbors are all there.
    pixel = vec2(dFdx(place.x), dFdy(place.y));
    // In pixels, by the field's slope. At a high zoom it has steps of more than a pixel.
    vec2 rise = vec2(dFdx(field.r), dFdy(field.r));
    slope = max(length(rise), 0.005);
    float depth = (field.r - Cutoff) / slope + 0.5;
    // At a cutoff of 0 there is none where no drop is, nor half a pixel around.
    if (depth <= 0.0 || field.r <= min(Cutoff, 0.0))
        discard;

    // Lit from above: a surface that looks down has half of the rim. Where the field is full at once, and has
    // no slope, it is what has no water three pixels above it.
    float rim = clamp(1.6 - depth * 0.4, 0.0, 1.0) * (0.65 - 0.3 * rise.y / slope);
    rim = max(rim, 0.475 * (IsDry(vec2(-1.6, 2.6)) + IsDry(vec2(1.6, 2.6))));
    // No darker from what there is between the drops of a pool: from near, each drop would show as a spot.
    float dark = 0.16 * clamp(field.g * 10.0, 0.0, 1.0);
    vec3 color = mix(Color.rgb * (1.0 - dark), vec3(0.9, 0.98, 1.0), rim);
    gl_FragColor = vec4(color, min(Color.a * (1.0 + 0.4 * rim), 1.0) * min(depth, 1.0));
}
