// What the object families share: the life of their contexts, attributes, hooks, the frames around what they encode and
// decode.
#pragma once

#include "answer.h"
#include "attribute.h"
#include "context.h"
#include "decode.h"
#include "encode.h"
#include "hook.h"
#include "list.h"
