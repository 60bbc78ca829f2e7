#pragma once

// Set by a target when its input was taken for what it is: something was stored, read, answered. The replay fails at an
// input that comes to nothing, unless the name of its file begins with "nothing-", since a target that has lost hold of
// what it tries is content with every input.
inline bool cameToSomething = false;
