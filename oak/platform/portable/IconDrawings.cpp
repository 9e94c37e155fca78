// Icons of folders, drives and places, and the list of all.
#include "oak/platform/portable/IconDrawings.h"

#include "oak/platform/portable/IconCanvas.h"
#include "oak/platform/portable/ShellIcons.h"

namespace oak {
namespace {

constexpr TIconPaint FolderBack(0xFFE2A93C, 0xFFD0922A);
constexpr TIconPaint FolderFront(0xFFFFE08A, 0xFFF6BF4C);

void DrawFolderBack(TIconCanvas& canvas) {
  canvas.Fill(TIconShape().Rect(1, 2, 7, 6, 0.8).Rect(1, 4, 15, 13, 0.8), FolderBack);
}

void DrawFolderOpen(TIconCanvas& canvas) {
  DrawFolderBack(canvas);
  canvas.Rect(3, 5, 13, 11, TIconPaint(0xFFFFFFFF, 0xFFE9EEF4));
  canvas.Polygon({{3.4, 8}, {16, 8}, {14, 14}, {1, 14}}, FolderFront);
  canvas.Polygon({{3.4, 8}, {16, 8}, {15.9, 8.5}, {3.25, 8.5}}, 0x90FFFFFF);
}

void DrawDriveBody(TIconCanvas& canvas) {
  canvas.Polygon({{3, 4}, {13, 4}, {15, 9}, {1, 9}}, TIconPaint(0xFFEDF1F5, 0xFFCBD4DD));
  canvas.Rect(1, 9, 15, 13, TIconPaint(0xFFB3BFCB, 0xFF7F8C9A), 0.8);
  canvas.Rect(1, 9, 15, 10, 0xFFB9C4CF);
  canvas.Rect(3, 11, 8, 12, 0xFF66727F);
  canvas.Rect(12, 11, 13, 12, 0xFF4FE06A);
}

void DrawDrive(TIconCanvas& canvas) { DrawDriveBody(canvas); }

/// The line of a network below what is connected to it.
void DrawCable(TIconCanvas& canvas) {
  constexpr std::uint32_t cable = 0xFF2E9E5B;
  canvas.Rect(7.5, 11, 8.5, 13, cable);
  canvas.Rect(1, 13, 15, 14, cable);
  canvas.Rect(6, 12, 10, 15, TIconPaint(0xFF54C884, 0xFF2E9E5B), 0.6);
}

void DrawNetDrive(TIconCanvas& canvas) {
  canvas.SetPlace(0, -2, 1);
  DrawDriveBody(canvas);
  canvas.SetPlace(0, 0, 1);
  DrawCable(canvas);
}

void DrawRemovable(TIconCanvas& canvas) {
  canvas.Rect(5, 1, 11, 7, TIconPaint(0xFFE9EEF3, 0xFFAEBAC6), 0.4);
  canvas.Rect(6, 3, 7, 4, 0xFF5A6673);
  canvas.Rect(9, 3, 10, 4, 0xFF5A6673);
  canvas.Rect(4, 6, 12, 15, TIconPaint(0xFF5AA7EB, 0xFF2A6FBF), 1.4);
  canvas.Rect(6, 8, 10, 12, 0x50FFFFFF, 0.6);
  canvas.Rect(7, 13, 9, 14, 0xFFBFE3FF);
}

void DrawCdRom(TIconCanvas& canvas) {
  canvas.Circle(8, 8, 7, 0xFF93A0AE);
  canvas.Circle(8, 8, 7 - canvas.Hair(), TIconPaint(0xFFF2F5F8, 0xFFB7C3CF));
  canvas.Polygon({{8, 8}, {10, 1.6}, {13, 3.4}}, 0x609BE7C4);
  canvas.Polygon({{8, 8}, {13, 3.4}, {14.4, 6}}, 0x60F2A6D8);
  canvas.Polygon({{8, 8}, {6, 14.4}, {3, 12.6}}, 0x609FC5FF);
  canvas.Fill(TIconShape().Circle(8, 8, 2.6).Circle(8, 8, 1).AsHole(),
              TIconPaint(0xFFFFFFFF, 0xFFD5DDE5));
  canvas.Circle(8, 8, 1, 0xFF93A0AE);
}

void DrawNetwork(TIconCanvas& canvas) {
  canvas.Circle(8, 8, 7, TIconPaint(0xFF6EC0F7, 0xFF1F66B8));
  const double line = canvas.HasDetail() ? 0.6 : 1;
  const double half = line / 2;
  constexpr std::uint32_t white = 0xC8FFFFFF;
  canvas.Fill(TIconShape().Ellipse(8, 8, 3.6, 7).Ellipse(8, 8, 3.6 - line, 7 - line).AsHole(),
              white);
  canvas.Rect(8 - half, 1, 8 + half, 15, white);
  canvas.Rect(1, 8 - half, 15, 8 + half, white);
  if (!canvas.HasDetail()) return;
  canvas.Rect(2.1, 4.5 - half, 13.9, 4.5 + half, white);
  canvas.Rect(2.1, 11.5 - half, 13.9, 11.5 + half, white);
}

void DrawComputer(TIconCanvas& canvas) {
  canvas.Rect(1, 2, 15, 12, TIconPaint(0xFF5B6876, 0xFF3D4853), 0.9);
  canvas.Rect(2, 3, 14, 11, TIconPaint(0xFF7CCBFA, 0xFF2C7FD0));
  if (canvas.HasDetail()) canvas.Polygon({{2, 3}, {9, 3}, {4.5, 11}, {2, 11}}, 0x30FFFFFF);
  canvas.Rect(7, 12, 9, 13, 0xFF7C8896);
  canvas.Rect(4, 13, 12, 14, TIconPaint(0xFFA7B3C0, 0xFF7C8896), 0.5);
}

void DrawServer(TIconCanvas& canvas) {
  canvas.Rect(4, 1, 12, 15, TIconPaint(0xFF7A8795, 0xFF4D5966), 1);
  canvas.Rect(5, 2, 11, 14, TIconPaint(0xFFDCE3EA, 0xFFA9B5C1), 0.4);
  canvas.Rect(6, 3, 10, 4, 0xFF66727F);
  canvas.Rect(6, 5, 10, 6, 0xFF66727F);
  canvas.Rect(6, 7, 10, 8, 0xFF66727F);
  canvas.Rect(9, 11, 10, 12, 0xFF33B55A);
}

void DrawShare(TIconCanvas& canvas) {
  canvas.SetPlace(0, -2, 1);
  DrawFolder(canvas);
  canvas.SetPlace(0, 0, 1);
  DrawCable(canvas);
}

void DrawSettings(TIconCanvas& canvas) { DrawGear(canvas, 8, 8, 7); }

void DrawBin(TIconCanvas& canvas) {
  canvas.Polygon({{2.5, 5}, {13.5, 5}, {12.4, 15}, {3.6, 15}}, TIconPaint(0xFF93A6B8, 0xFF6F8294));
  const double hair = canvas.Hair();
  canvas.Polygon(
      {{2.5 + hair, 5}, {13.5 - hair, 5}, {12.4 - hair, 15 - hair}, {3.6 + hair, 15 - hair}},
      TIconPaint(0xFFE9F0F6, 0xFFBCCBD9));
  for (int x = 5; x <= 10; x += 2) canvas.Rect(x, 7, x + 1, 13, 0x907C90A4);
}

void DrawTrash(TIconCanvas& canvas) {
  DrawBin(canvas);
  canvas.Rect(6, 1, 10, 3, 0xFF7C90A4, 0.6);
  canvas.Rect(7, 2, 9, 3, 0xFFE9F0F6);
  canvas.Rect(2, 3, 14, 5, TIconPaint(0xFFA9BACA, 0xFF7C90A4), 0.7);
}

void DrawTrashFull(TIconCanvas& canvas) {
  canvas.Polygon({{4, 6}, {3.5, 2.2}, {7, 1}, {8.5, 6}}, TIconPaint(0xFFFFFFFF, 0xFFDDE4EB));
  canvas.Polygon({{7, 6}, {8.6, 1.4}, {12.6, 2.8}, {12, 6}}, TIconPaint(0xFFFFE9A8, 0xFFF3CD6C));
  canvas.Polygon({{5.4, 6}, {6.8, 3}, {10, 3.6}, {10, 6}}, TIconPaint(0xFFF6F9FC, 0xFFC9D5E0));
  DrawBin(canvas);
  canvas.Rect(2, 5, 14, 6, TIconPaint(0xFFA9BACA, 0xFF7C90A4), 0.5);
}

void DrawDesktop(TIconCanvas& canvas) {
  canvas.Rect(1, 2, 15, 14, TIconPaint(0xFF56636F, 0xFF39434D), 0.9);
  canvas.Rect(2, 3, 14, 13, TIconPaint(0xFF58B5C9, 0xFF2B77A6));
  canvas.Rect(2, 11, 14, 13, 0xFF27313A);
  canvas.Rect(3, 12, 5, 13, 0xFF6EC0F7);
  for (int y = 4; y <= 8; y += 2) canvas.Rect(3, y, 4, y + 1, 0xFFFFFFFF);
  canvas.Rect(7, 5, 13, 10, 0xE0F4F8FB);
  canvas.Rect(7, 5, 13, 6, 0xFF4C9BE8);
}

void DrawUser(TIconCanvas& canvas) {
  canvas.Fill(TIconShape().Rect(2, 9, 14, 15, 4).Rect(2, 12, 14, 14).Rect(2, 13, 14, 15, 0.6),
              TIconPaint(0xFF5AA7EB, 0xFF2A6FBF));
  canvas.Circle(8, 5, 4, 0xFFB8763F);
  canvas.Circle(8, 5.3, 3.6, TIconPaint(0xFFFFDDB8, 0xFFF2B98A));
}

void DrawLibraries(TIconCanvas& canvas) {
  canvas.Rect(1, 2, 5, 14, TIconPaint(0xFF5AA7EB, 0xFF2A6FBF), 0.6);
  canvas.Rect(5, 3, 9, 14, TIconPaint(0xFF67BF7A, 0xFF3B8F50), 0.6);
  canvas.Polygon({{9, 4.6}, {12, 3.8}, {15, 13.4}, {12, 14.2}}, TIconPaint(0xFFF2A65A, 0xFFD0782A));
  canvas.Rect(2, 4, 4, 5, 0xE0FFFFFF);
  canvas.Rect(6, 5, 8, 6, 0xE0FFFFFF);
  canvas.Rect(1, 14, 15, 15, 0xFF7C8896);
}

void DrawQuickAccess(TIconCanvas& canvas) {
  canvas.Polygon({{8, 0.8},
                  {10.2, 5.6},
                  {15.4, 6.2},
                  {11.5, 9.8},
                  {12.6, 15},
                  {8, 12.3},
                  {3.4, 15},
                  {4.5, 9.8},
                  {0.6, 6.2},
                  {5.8, 5.6}},
                 TIconPaint(0xFF6DB6F2, 0xFF2A6FBF));
}

void DrawLinkOverlay(TIconCanvas& canvas) {
  const double hair = canvas.Hair();
  canvas.Rect(0, 8, 8, 16, 0xFF8A98A6, 0.6);
  canvas.Rect(hair, 8 + hair, 8 - hair, 16 - hair, 0xFFFFFFFF);
  constexpr TIconPaint arrow(0xFF3A8AE0, 0xFF1F5FB0);
  canvas.Fill(
      TIconShape().Line({{2.4, 13.6}, {4.8, 11.2}}, 1.3).Polygon({{3, 9.5}, {6.5, 9.5}, {6.5, 13}}),
      arrow);
}

void DrawShareOverlay(TIconCanvas& canvas) {
  constexpr TIconPaint person(0xFF58A6EA, 0xFF1F5FB0);
  canvas.Fill(TIconShape().Circle(2.6, 10.4, 2.1).Rect(0, 12, 5.2, 16, 1.6), 0xFFFFFFFF);
  canvas.Fill(TIconShape().Circle(6.4, 10.4, 2.1).Rect(3.8, 12, 9, 16, 1.6), 0xFFFFFFFF);
  canvas.Fill(TIconShape().Circle(2.6, 10.4, 1.5).Rect(0.5, 12.5, 4.7, 15.5, 1.5), person);
  canvas.Fill(TIconShape().Circle(6.4, 10.4, 1.5).Rect(4.3, 12.5, 8.5, 15.5, 1.5), person);
}

using TDrawing = void (*)(TIconCanvas& canvas);

struct TPicture {
  TShellIcon Icon;
  TDrawing Draw;
};
constexpr TPicture Pictures[] = {
    {iconDocument, DrawDocument},
    {iconProgram, DrawProgram},
    {iconFolder, DrawFolder},
    {iconFolderOpen, DrawFolderOpen},
    {iconRemovable, DrawRemovable},
    {iconDrive, DrawDrive},
    {iconNetDrive, DrawNetDrive},
    {iconCdRom, DrawCdRom},
    {iconNetwork, DrawNetwork},
    {iconComputer, DrawComputer},
    {iconServer, DrawServer},
    {iconSettings, DrawSettings},
    {iconShare, DrawShare},
    {iconLinkOverlay, DrawLinkOverlay},
    {iconShareOverlay, DrawShareOverlay},
    {iconTrash, DrawTrash},
    {iconTrashFull, DrawTrashFull},
    {iconDesktop, DrawDesktop},
    {iconUser, DrawUser},
    {iconLibraries, DrawLibraries},
    {iconQuickAccess, DrawQuickAccess},
    {iconText, DrawText},
    {iconImage, DrawImage},
    {iconAudio, DrawAudio},
    {iconVideo, DrawVideo},
    {iconArchive, DrawArchive},
    {iconSystemFile, DrawSystemFile},
    {iconMail, DrawMail},
    {iconContact, DrawContact},
    {iconCalendar, DrawCalendar},
    {iconLink, DrawLink},
};

TDrawing DrawingOf(int index) {
  for (const TPicture& picture : Pictures)
    if (picture.Icon == index) return picture.Draw;
  return DrawPage;
}

}  // namespace

void DrawFolder(TIconCanvas& canvas) {
  DrawFolderBack(canvas);
  canvas.Rect(1, 6, 15, 14, FolderFront, 0.8);
  canvas.Rect(1.5, 6, 14.5, 6 + canvas.Hair(), 0x90FFFFFF);
}

std::vector<std::uint32_t> DrawShellIcon(int index, int side) {
  TIconCanvas canvas(side);
  DrawingOf(index)(canvas);
  return canvas.Take();
}

}  // namespace oak
