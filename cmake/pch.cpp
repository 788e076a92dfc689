// SPDX-License-Identifier: MIT
// The targets that own a precompiled header need a source.
