/* Streams for the statically linked solver's printing code, shared library
   only.

   Debian builds the solver's static archives as position-independent
   executables' code, not a shared library's: their ten references to the C
   library's stdout and stderr (all in message printing) cannot be bound to
   another object from inside a shared library. They bind to these instead:
   hidden, so no other code in the process sees them. The solver never prints
   here (its print level is 0 and it has no print function), so they are never
   written through; a flush of a null stream flushes the process's output
   streams, which is harmless. Executables link the archives as they are and
   must not get these: an executable's stdout would replace the C library's
   for every object in the process. */
__attribute__((visibility("hidden"))) void* stdout = 0;
__attribute__((visibility("hidden"))) void* stderr = 0;
