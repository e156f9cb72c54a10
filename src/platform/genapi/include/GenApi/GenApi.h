// Umbrella of the GenApi interfaces.
#pragma once

#include "GenApi/IBase.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "GenApi/IPort.h"
#include "GenApi/IValues.h"
#include "GenApi/Lock.h"
#include "GenApi/NodeCallback.h"
#include "GenApi/NodeMapFactory.h"
#include "GenApi/Types.h"
