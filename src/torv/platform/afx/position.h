#pragma once

/// A place in a list or map; null is no place. It stays valid while the element that it names lives, whatever happens
/// to the others.
struct tagPosition;
/// See tagPosition, which is never defined.
using POSITION = tagPosition*;
