#version 120
// A polygon, from a map of the distances to its outline. See polygon.vert.
//
// Its border is a line of ink: full at the outline, it runs out inwards. The outline itself is as sharp as
// the screen allows.

uniform vec4 InsideColor;
uniform vec4 BorderColor;
uniform float BorderWidth;     // world units, inwards; 0: no border
uniform float PixelSize;       // world units over which the border runs out: a pixel, or all its width
uniform sampler2D DistSampler; // alpha: distance / DistScale + 0.5; negative distances are inside
uniform float DistScale;       // world units

varying vec2 place; // in the map

void main()
{
    // In parts of the scale. The map's outermost cells, of 64, are all outside; what a driver puts around them
    // need not be.
    float depth = 0.5 - texture2D(DistSampler, clamp(place, 0.01, 0.99)).a;

    // Its slope tells how large a pixel is. There is none where the map doesn't reach, which is beyond half
    // its scale.
    float pixel = max(length(vec2(dFdx(depth), dFdy(depth))), 1.0e-4);
    float whole = clamp(depth / pixel + 0.5, 0.0, 1.0);
    if (whole <= 0.0)
        discard; // writes no depth

    // A border wider than the map reaches is drawn as wide as that, 127 of 256 parts: the deepest place that
    // the map knows is always inside. Of a small polygon, or a thin one, the map reaches farther in.
    float deep = max(depth, 0.0) * max(DistScale, BorderWidth * (256.0 / 127.0));
    float border = clamp((BorderWidth - deep) / PixelSize, 0.0, 1.0);

    // Each by its share and its own opacity, so that nothing shines through.
    float inside = (1.0 - border) * InsideColor.a;
    border *= BorderColor.a;
    float alpha = max(inside + border, 1.0e-6);
    gl_FragColor =
        vec4((inside * InsideColor.rgb + border * BorderColor.rgb) / alpha, alpha * whole);
}
