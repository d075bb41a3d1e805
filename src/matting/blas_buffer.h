// The dense kernels' work buffer, mapped before the factorisation needs it.
//
// The BLAS maps one large work buffer on its first level-3 call and keeps it
// for the life of the process; when that mapping fails it retries forever, so
// a host short of address space would hang inside the solve. The buffer is
// therefore mapped here, on purpose, after a trial mapping of the same size
// has shown that it can be.
#pragma once

// True when the buffer is in place (now or from an earlier call); false,
// without entering the BLAS, when the machine cannot map it. Call it with the
// solver's lock held, before the factor is allocated.
bool blasBufferReady();
