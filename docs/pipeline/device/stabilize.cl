// A stage of a camera: takes the shake out of a video, frame by frame. 300 MHz.
#include "match.h"

#define WIDTH  1280
#define HEIGHT 720
#define PATCH  16
#define RANGE  8

// Whether a patch has enough structure to be followed.
inline bool has_structure(local const uchar* patch) {
    uint edges = 0;
    #pragma unroll 2
    for (int row = 0; row < PATCH; ++row) edges += row_edges(patch + row * PATCH);
    return edges > PATCH;
}

kernel void fetch(global const pixel_line* restrict frame) {
    for (uint i = 0; i < HEIGHT * WIDTH / PIXELS; ++i) {
        pixel_line p = frame[i];
        write_channel(raw, p);
    }
}

// Moves the picture by what the frame before needed; runs by itself.
__attribute__((autorun)) kernel void warp(void) {
    pixel_line held = 0;
    while (true) {
        pixel_line p = read_channel(raw);
        write_channel(warped, shift(held, p));
    }
}
// Finds where each patch was in the frame before.
kernel void track(global const uchar* restrict now, global const uchar* restrict before,
                  global int2* restrict motion, uint num_patches) {
    for (uint p = 0; p < num_patches; ++p) {
        best_shift best = {0, UINT_MAX};
        for (int2 shift = first_shift(RANGE); !is_last(shift, RANGE); shift = next(shift, RANGE)) {
            uint cost = distance(now, before, p, shift);
            if (cost < best.cost) {
                best.cost = cost;
                best.shift = shift;
            }
        }
        // One store for each patch.
        motion[p] = best.shift;
    }
}

channel pixel_line merged __attribute__((depth(64)));
channel pixel_line graded __attribute__((depth(10)));

// Mixes each pixel with its past, where that has moved to.
kernel void merge(global const pixel_line* restrict past, global const int2* restrict motion,
                  global pixel_line* restrict next_past) {
    // One line of pixels a cycle, if memory and channels keep up.
    for (uint i = 0; i < HEIGHT * WIDTH / PIXELS; ++i) {
        pixel_line p = read_channel(warped);
        pixel_line then = past[moved_line(i)];
        int2 shift = motion[patch_of(i)];
        pixel_line mixed = mix_lines(p, then, shift);
        next_past[i] = mixed;
        write_channel(merged, mixed);
    }
}

__attribute__((autorun)) kernel void grade(void) {
    while (true) {
        pixel_line p = read_channel(merged);
        write_channel(graded, curve(p));
    }
}
kernel void emit(global pixel_line* restrict frame) {
    // One burst for each row.
    for (uint i = 0; i < HEIGHT * WIDTH / PIXELS; ++i)
        frame[i] = read_channel(graded);
}
// Counts how often each brightness occurs.
kernel void meter(global const uchar* restrict frame, global uint* restrict counts) {
    uint local_counts[256] = {0};
    // A count that is read and written in the same cycle waits for the one before.
    for (uint i = 0; i < HEIGHT * WIDTH; i += 4) {
        uchar luma = frame[i];
        local_counts[luma] += 1;
    }
    for (uint k = 0; k < 256; ++k) counts[k] = local_counts[k];
}
