/// GNUstep's headers ask for this header as soon as the compiler has blocks; GCC's Objective-C runtime comes without
/// one. The two functions are gnustep-base's own, and nothing here uses them: see Blocks.hpp.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
void *_Block_copy(const void *);
void _Block_release(const void *);
#ifdef __cplusplus
}
#endif
