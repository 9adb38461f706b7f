// What the exported functions are made of: each is one statement that hands on to an engine with
// the row of its type or field.
#pragma once

#include "encoders/clone.h"
#include "encoders/compare.h"
#include "encoders/length.h"
#include "encoders/marshal.h"
#include "encoders/small_wire.h"
#include "encoders/text.h"
#include "encoders/unmarshal.h"
#include "encoders/xml.h"
#include "frame/array.h"
#include "frame/lifecycle.h"
#include "frame/module.h"
#include "frame/small_type.h"
#include "frame/state.h"
#include "frame/value_field.h"
#include "frame/whole_record.h"
#include "messages/bundle.h"
#include "messages/message.h"
#include "model/named_rows.h"
