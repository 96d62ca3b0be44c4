#version 120
// A circle with a border, and a wedge that shows how it is turned. See circle.vert.

uniform vec4 InsideColor;
uniform vec4 BorderColor;
uniform vec4 CakeSlizeColor; // of the wedge
uniform float BorderWidth;   // world units, inwards; 0: no border
uniform float PixelSize;     // world units per pixel
uniform float Radius;        // world units

varying vec2 pos;   // in pixels, from the centre
varying vec2 sides; // of the wedge: how far in pixels, plus a half, on the inner side of each

void main()
{
    float radius = Radius / PixelSize;
    float depth = radius - length(pos);
    // Of something small, half is left for the inside.
    float width = min(BorderWidth / PixelSize, 0.3 * radius);

    // The share of this pixel: of the whole circle, of what the border leaves, of the wedge in that. What is
    // thinner than a pixel covers no more than its width.
    float whole = clamp(min(depth + 0.5, 2.0 * radius), 0.0, 1.0);
    float inside = clamp(min(depth - width + 0.5, 2.0 * (radius - width)), 0.0, 1.0);
    vec2 wedges = clamp(sides, 0.0, 1.0);
    float wedge = inside * max(wedges.x + wedges.y - 1.0, 0.0);

    // Each by its own opacity: nothing shines through, and what isn't covered leaves no fringe.
    float border = (whole - inside) * BorderColor.a;
    inside = (inside - wedge) * InsideColor.a;
    wedge *= CakeSlizeColor.a;
    float alpha = inside + wedge + border;
    if (alpha <= 0.0)
        discard; // writes no depth
    vec3 color = inside * InsideColor.rgb + wedge * CakeSlizeColor.rgb + border * BorderColor.rgb;
    gl_FragColor = vec4(color / alpha, alpha);
}
