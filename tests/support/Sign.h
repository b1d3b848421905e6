#pragma once

// Of the result of a comparison only the sign counts.
inline int SignOf(int value) {
  return (value > 0) - (value < 0);
}
