#ifndef PLATFORM_FOUNDATION_OBX_ASSERT_H
#define PLATFORM_FOUNDATION_OBX_ASSERT_H

// Checks for a fault that must not happen. When `condition` is false it throws a CException* whose
// message is "Assertion failed: " and `text`: a library must not end its caller's process, and the
// importer turns the exception into the error text of the packet.
void Obx_Assert(bool condition, const char16_t* text);

#endif
