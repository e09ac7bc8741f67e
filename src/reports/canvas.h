#pragma once

#include <string>
#include <string_view>

namespace reports
{

// A font as the reports ask for it: the printer maps it to the nearest it has.
struct FontRequest
{
    std::string face = "Arial";
    int pointSize = 9;
    int weight = 400; // 700 is bold
    bool italic = false;
};

// Metrics of the selected font, in device units.
struct FontMetrics
{
    int height = 0; // ascent plus descent
    int externalLeading = 0;
    int averageCharWidth = 0;
    int maxCharWidth = 0;
};

struct TextSize
{
    int width = 0;
    int height = 0;
};

// Paper orientation codes, as a report stores them.
enum Orientation
{
    orientationDefault = 0,
    orientationPortrait = 1,
    orientationLandscape = 2,
};

// The surface that reports print on: a printer page, a preview page or a test
// recorder. Coordinates are device units with the origin at the top left of the
// printable area; text is drawn with its top-left corner at the point given.
class Canvas
{
public:
    virtual ~Canvas() = default;

    // Size of the printable area and the resolution.
    virtual int DeviceWidth() const = 0;
    virtual int DeviceHeight() const = 0;
    virtual int DpiX() const = 0;
    virtual int DpiY() const = 0;
    // Distance from the paper's edge to the printable area.
    virtual int PhysicalOffsetX() const = 0;
    virtual int PhysicalOffsetY() const = 0;

    // The printer's current orientation (orientationDefault when it cannot tell),
    // and changing it before the first page.
    virtual int GetOrientation() const { return orientationDefault; }
    virtual void SetOrientation(int /*orientation*/) {}

    virtual void SelectFont(const FontRequest& font) = 0;
    virtual FontMetrics GetFontMetrics() const = 0;
    // Extent of a line of text in the selected font.
    virtual TextSize GetTextExtent(std::string_view text) const = 0;

    virtual void StartPage() = 0;
    virtual void EndPage() = 0;

    virtual void DrawText(int x, int y, std::string_view text) = 0;
    // A solid black line of `penWidth` device units (0 is the thinnest the device draws).
    virtual void DrawLine(int x1, int y1, int x2, int y2, int penWidth) = 0;
    // A rectangle filled with the light grey shading brush.
    virtual void FillRect(int x, int y, int width, int height) = 0;

    int TextWidth(std::string_view text) const { return GetTextExtent(text).width; }
};

} // namespace reports
