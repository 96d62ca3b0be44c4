#version 120
// The trail of a pen. See line.vert.

uniform vec4 Color;
uniform float Width;     // of the strip, world units: that of the trail and a pixel, half of it on each side to fade in
uniform float PixelSize; // world units per pixel

varying float side; // in pixels, from the one side
varying float fresh;

void main()
{
    // A trail thinner than a pixel covers no more than its width.
    float width = Width / PixelSize;
    float cover = clamp(min(min(side, width - side), width - 1.0), 0.0, 1.0);
    float alpha = Color.a * fresh * cover;
    if (alpha <= 0.0)
        discard;
    gl_FragColor = vec4(Color.rgb, alpha);
}
