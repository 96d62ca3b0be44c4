#version 120
// A half plane of earth: a border, and below it a band of lighter ground that tells it from bodies. See
// plane.vert.

uniform vec4 InsideColor;
uniform vec4 BorderColor;
uniform float BorderWidth; // world units; 0: no border, and no band
uniform float PixelSize;   // world units per pixel

varying float height; // over the earth, in GUI units

void main()
{
    // In pixels, whatever a GUI unit is.
    float depth = -height / length(vec2(dFdx(height), dFdy(height)));
    float whole = clamp(depth + 0.5, 0.0, 1.0);
    if (whole <= 0.0)
        discard; // writes no depth

    float width = BorderWidth / PixelSize;
    float inside = clamp(depth - width + 0.5, 0.0, whole);
    float light = 0.25 * clamp(min(5.0 * width - depth + 0.5, 4.0 * width), 0.0, 1.0);
    vec3 ground = mix(InsideColor.rgb, vec3(1.0), light);

    // Each by its share and its own opacity, so that nothing shines through.
    float border = (whole - inside) * BorderColor.a;
    inside *= InsideColor.a;
    float alpha = max(inside + border, 1.0e-6);
    gl_FragColor = vec4((inside * ground + border * BorderColor.rgb) / alpha, alpha);
}
