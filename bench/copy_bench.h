#pragma once

namespace kelpin::bench {

// What 250 contacts cost that the whole program copies to a card and back, beside bare loops over
// the card and the file, and what its picker costs to fill. Prints tables; judges nothing. False
// when it could not be measured.
bool CopyCosts();

}  // namespace kelpin::bench
