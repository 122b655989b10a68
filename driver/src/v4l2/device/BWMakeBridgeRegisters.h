#pragma once

#include "v4l2/device/BWBridgeRegisters.h"
#include "v4l2/finding/BWVideoNode.h"

#include <memory>

class BWKernelCalls;

/// The bridge chip's registers of that camera: by way of its driver where the first access shows that this works, else
/// over USB. Touches no hardware before that. `kernel` must outlive what is returned.
std::unique_ptr<BWBridgeRegisters> makeBridgeRegisters(const BWVideoNode &node, BWKernelCalls &kernel);
