// A progress bar on stderr, drawn only when stderr is a terminal.
#pragma once

// Progress callback for the engine; data is unused. Returns 1.
int drawProgressBar(int current, int total, void* data);
// Ends the bar's line if one was drawn.
void finishProgressBar();
