#pragma once

namespace kelpin::bench {

// Card commands and card time of the extended phone book, for each sample image.
void ExtendedCosts();

}  // namespace kelpin::bench
