#pragma once

/// What this process holds of the system at one moment.
struct Holdings
{
    int descriptors = 0;
    int threads = 0;
    int children = 0;    ///< of any thread, those that ended and nobody waited for included
    double resident = 0; ///< KiB of memory in use, the allocator's reserves included
    double heap = 0;     ///< KiB that were allocated and not given back; 0 under the sanitizers
};

Holdings holdings();
