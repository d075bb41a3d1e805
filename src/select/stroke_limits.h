// Limits of the brush strokes the selection tools draw into their line masks.
#pragma once

// The line drawer accepts lines at most 32767 pixels thick, and a stroke of
// radius r is 2 r + 1 thick.
inline constexpr int kMaxBrushRadius = 16383;
