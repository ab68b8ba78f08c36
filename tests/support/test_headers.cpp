// SPDX-License-Identifier: Apache-2.0
// What the headers that are compiled before the tests belong to.
