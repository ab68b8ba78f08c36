// SPDX-License-Identifier: Apache-2.0
// How much two patches of a frame differ.
// The sum over a row: both rows are read from global memory again for each shift.
inline uint row_distance(global const uchar* now, global const uchar* before) {
    uint sum = abs_diff(vload16(0, now), vload16(0, before));
    return sum;
}

inline uint distance(global const uchar* now, global const uchar* before, uint patch, int2 shift) {
    uint sum = 0;
    uint here = patch_start(patch);
    uint there = moved(here, shift);
    for (int row = 0; row < PATCH; ++row)
        sum += row_distance(now + here + row * WIDTH, before + there + row * WIDTH);
    return sum;
}
