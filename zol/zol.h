// The whole zol library: the BER codec, the universal value classes, the
// descriptors and the protocol's generated message classes.
#pragma once

#include "zol/ber/asn_buf.h"
#include "zol/ber/ber.h"
#include "zol/ber/asn_type.h"
#include "zol/ber/asn_buffer.h"
#include "zol/ber/asn_tlv.h"
#include "zol/meta/asn_desc.h"
#include "zol/meta/asn_reflect.h"
#include "zol/universal/asn_int.h"
#include "zol/universal/asn_real.h"
#include "zol/universal/asn_octs.h"
#include "zol/universal/asn_strings.h"
#include "zol/universal/asn_bits.h"
#include "zol/universal/asn_oid.h"
#include "zol/universal/asn_any.h"
#include "zol/universal/asn_external.h"
#include "zol/ber/pattern.h"

// The generated classes of every module of the protocol.
#include "zol/modules.h"

namespace Zol {

// The type of any module of the protocol named `name`, or null.
inline const AsnTypeDesc* FindType(const char* name) { return AsnFindType(AsnModules, name); }

}  // namespace Zol

// Display text and conversions of the protocol's values.
#include "zol/values/zol_convert.h"
#include "zol/values/zol_format.h"
#include "zol/values/hex_digits.h"
