#version 120
// A box with a border. See box.vert.

uniform vec4 InsideColor;
uniform vec4 BorderColor;
uniform float BorderWidth; // world units, inwards; 0: no border
uniform float PixelSize;   // world units per pixel
uniform vec2 HalfSize;     // world units

varying vec2 pos; // in pixels, from the centre

// How much of this pixel a centred box covers. One thinner than a pixel covers no more than its width.
float Coverage(vec2 halfSize)
{
    vec2 c = clamp(min(halfSize - abs(pos) + 0.5, 2.0 * halfSize), 0.0, 1.0);
    return c.x * c.y;
}

void main()
{
    vec2 halfSize = HalfSize / PixelSize;
    // Of something thin, half is left for the inside.
    float width = min(BorderWidth / PixelSize, 0.5 * min(halfSize.x, halfSize.y));
    float inside = Coverage(halfSize - width);
    float border = Coverage(halfSize) - inside;

    // Each by its share and its own opacity: a border doesn't shine through the inside, and what isn't
    // covered has no colour to leave a fringe.
    inside *= InsideColor.a;
    border *= BorderColor.a;
    float alpha = inside + border;
    if (alpha <= 0.0)
        discard; // writes no depth
    gl_FragColor = vec4((inside * InsideColor.rgb + border * BorderColor.rgb) / alpha, alpha);
}
