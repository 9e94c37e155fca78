// The pictures behind the shell's icons.
#pragma once

#include <cstdint>
#include <vector>

namespace oak {

class TIconCanvas;

/// An icon drawn in a size: `side` rows of `side` pixels from the top, 0xAARRGGBB, colours
/// multiplied by alpha. Positions without a picture of their own show an unknown file. Any thread.
std::vector<std::uint32_t> DrawShellIcon(int index, int side);

// For the sources of the drawings only.
void DrawFolder(TIconCanvas& canvas);
void DrawPage(TIconCanvas& canvas);

void DrawText(TIconCanvas& canvas);
void DrawDocument(TIconCanvas& canvas);
void DrawImage(TIconCanvas& canvas);
void DrawAudio(TIconCanvas& canvas);
void DrawVideo(TIconCanvas& canvas);
void DrawArchive(TIconCanvas& canvas);
void DrawProgram(TIconCanvas& canvas);
void DrawSystemFile(TIconCanvas& canvas);
void DrawMail(TIconCanvas& canvas);
void DrawContact(TIconCanvas& canvas);
void DrawCalendar(TIconCanvas& canvas);
void DrawLink(TIconCanvas& canvas);
void DrawGear(TIconCanvas& canvas, double x, double y, double radius);

}  // namespace oak
