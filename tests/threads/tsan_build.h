// Forced into every file of the thread-checked build. A function cloned per
// processor type is picked by a resolver that the loader runs before the
// thread checker has started, and the checker's hooks in that resolver crash
// the program; the checked build therefore keeps the portable version only.
#pragma once

#define target_clones(...)
