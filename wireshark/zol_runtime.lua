-- The dissector's hand-written part, the same for every type: reading BER
-- as zol's decoders read it, framing messages in a TCP stream, showing each
-- value as zoldump --brief does, and registering with Wireshark. zolc puts
-- the protocol's `types` and `envelopes` in front of it.

local zol = Proto("zol", "zol trading protocol")

local byte, format, sub, concat = string.byte, string.format, string.sub, table.concat
local floor = math.floor

-- Bit `n` (0 the lowest) of `x`, without bit32, which Lua 5.3 and 5.4 lack.
local function bit(x, n)
    return floor(x / 2 ^ n) % 2
end

-- m * 2^p, exactly as the C library's ldexp, which Lua 5.3 and 5.4 lack.
local ldexp = math.ldexp or function(m, p)
    while p > 1000 and m ~= 0 do
        m, p = m * 2.0 ^ 1000, p - 1000
    end
    while p < -1000 and m ~= 0 do
        m, p = m * 2.0 ^ -1000, p + 1000
    end
    return m * 2.0 ^ p
end

local INDEFINITE = 0xFFFFFFFF      -- the indefinite length; a definite FFFFFFFF reads alike, as in the decoders
local CONSTRUCTED = 0x20000000     -- the constructed bit of a tag word, bit 29
local SEQUENCE_TAG = 0x30000000
local OCTET_STRING_TAG = 0x04000000
local BIT_STRING_TAG = 0x03000000
local MAX_NESTING = 64             -- levels of a constructed string
local MESSAGE_LIMIT = 64 * 1024 * 1024  -- a message announcing more is refused, as zoldump refuses it

---------------------------------------------------------------------------
-- The types, linked: aliases resolved to the type at the end of their
-- chain, each member's tags as a set, each member a field.

for _, kind in ipairs { "INTEGER", "ENUMERATED", "BOOLEAN", "REAL", "NULL", "OCTET STRING", "BIT STRING" } do
    types[kind] = { kind = kind }
end

local function resolved(name)
    local t = types[name]
    while t.alias do
        t = types[t.alias]
    end
    return t
end

-- The field of each kind of value: leaves hold their value, a choice the
-- name of its alternative in force, sequences and lists nothing.
local FIELD_TYPES = {
    INTEGER = ftypes.INT32, ENUMERATED = ftypes.INT32, BOOLEAN = ftypes.BOOLEAN, REAL = ftypes.DOUBLE,
    NULL = ftypes.NONE, ["OCTET STRING"] = ftypes.STRING, ["BIT STRING"] = ftypes.STRING,
    SEQUENCE = ftypes.NONE, ["SET OF"] = ftypes.NONE, CHOICE = ftypes.STRING,
}
local FIELD_BASES = { INTEGER = base.DEC, ENUMERATED = base.DEC, BOOLEAN = base.NONE }

local fields = {}
local f_message = ProtoField.string("zol.message", "Message", base.NONE, "The type of the message: its envelope")
fields[#fields + 1] = f_message

local defined = {}
for name, t in pairs(types) do
    if not t.alias then
        t.name = name
        defined[#defined + 1] = t
    end
end
table.sort(defined, function(a, b) return a.name < b.name end)
for _, t in ipairs(defined) do
    if t.element then
        t.element = resolved(t.element)
    end
    t.byTag = t.kind == "CHOICE" and {} or nil  -- its alternatives by the tags they take
    for _, m in ipairs(t.members or {}) do
        m.name, m.t = m[1], resolved(m[2])
        local kind = m.t.kind
        m.field = ProtoField.new(m.name, "zol." .. t.name .. "." .. m.name, FIELD_TYPES[kind],
                                 kind == "ENUMERATED" and m.t.names or nil, FIELD_BASES[kind])
        fields[#fields + 1] = m.field
        if m.tags then
            m.accepts = {}
            for _, tag in ipairs(m.tags) do
                m.accepts[tag] = m
                if t.byTag then
                    t.byTag[tag] = m
                end
            end
        end
    end
end
-- An untagged choice member takes what its choice's alternatives take.
for _, t in ipairs(defined) do
    for _, m in ipairs(t.members or {}) do
        m.accepts = m.accepts or m.t.byTag
    end
end
zol.fields = fields

local malformed = ProtoExpert.new("zol.malformed", "Malformed message", expert.group.MALFORMED, expert.severity.ERROR)
zol.experts = { malformed }

---------------------------------------------------------------------------
-- Values as zoldump --brief shows them, without the quotes of texts.

-- The C library's decimal point in the locale Wireshark runs in: a comma
-- in German. zoldump's reals have a point.
local POINT = format("%.1f", 0.5):sub(2, -2)

-- The shortest text that reads back as `x`: with a decimal point and no
-- exponent from 1e-5 to 1e15.
local function real_text(x)
    if x ~= x then
        return "NOT-A-NUMBER"
    elseif x == math.huge then
        return "PLUS-INFINITY"
    elseif x == -math.huge then
        return "MINUS-INFINITY"
    end
    local size = math.abs(x)
    local fixed = size < 1e15 and (x == 0 or size >= 1e-5)
    local text
    for digits = fixed and 0 or 1, 24 do
        text = format(fixed and "%." .. digits .. "f" or "%." .. digits .. "g", x)
        if tonumber(text) == x then
            break
        end
    end
    local at = POINT ~= "." and text:find(POINT, 1, true)
    return at and text:sub(1, at - 1) .. "." .. text:sub(at + #POINT) or text
end

-- The octets of a text that does not print (all of 20 to 7E), in hex.
local function hex_text(s)
    return "'" .. s:gsub(".", function(c) return format("%02X", byte(c)) end) .. "'H"
end

-- A tag word as its identifier octets in hex ("BF 82 1D").
local function tag_octets(tag)
    local first, second = floor(tag / 0x1000000), floor(tag / 0x10000) % 256
    local form = first % 32 ~= 31 and "%02X" or second < 0x80 and "%02X %02X" or "%02X %02X %02X"
    return format(form, first, second, floor(tag / 0x100) % 256)
end

local function bits_text(octets, count)
    local bits = {}
    for i = 0, count - 1 do
        local octet = byte(octets, floor(i / 8) + 1)
        bits[i + 1] = bit(octet, 7 - i % 8) == 1 and "1" or "0"
    end
    return concat(bits)
end

---------------------------------------------------------------------------
-- Decoding, step for step as zol's decoders do, so that what they refuse
-- is refused here at the same octet. A decoder that meets bad bytes
-- raises { failure = why }. Decoding is never reentered; the state of the
-- message being decoded lives here, where the decoders reach it fastest.

local msg          -- the bytes of the tvb, as a string
local pos          -- the next octet to read (1-based in msg)
local last         -- the message's last octet: reading stops there
local failed       -- a read ran past `last` (reported at the next tag, or at the end)
local msg_tvb      -- the tvb, for the items' ranges
local lines        -- the items shown so far
local alternative  -- the first alternative met, for the Info column

local function fail(why)
    error({ failure = why }, 0)
end

local function get_byte()
    local p = pos
    if p <= last then
        pos = p + 1
        return byte(msg, p)
    end
    failed = true
    return 0
end

-- A tag of up to three octets as a tag word, and the octets read.
local function read_tag()
    local p = pos
    local b = p <= last and byte(msg, p)
    if b and b % 32 ~= 31 and not failed then
        pos = p + 1
        return b * 0x1000000, 1
    end
    b = get_byte()
    if failed then
        fail("the message ends inside a tag")
    elseif b % 32 ~= 31 then
        return b * 0x1000000, 1
    end
    local c = get_byte()
    local tag, n = b * 0x1000000 + c * 0x10000, 2
    if c >= 0x80 then
        c = get_byte()
        tag, n = tag + c * 0x100, 3
        if c >= 0x80 and not failed then
            fail("a tag of more than three octets")
        end
    end
    if failed then
        fail("the message ends inside a tag")
    end
    return tag, n
end

local function read_length()
    local p = pos
    local c = p <= last and byte(msg, p)
    if c and c < 0x80 and not failed then
        pos = p + 1
        return c, 1
    end
    c = get_byte()
    if failed then
        fail("the message ends before a length")
    elseif c < 0x80 then
        return c, 1
    elseif c == 0x80 then
        return INDEFINITE, 1
    end
    c = c - 0x80
    if c >= 5 then
        fail("a length of more than four octets")
    end
    local len = 0
    for _ = 1, c do
        len = len * 256 + get_byte()
    end
    if failed then
        fail("the message ends inside a length")
    end
    return len, 1 + c
end

-- An end-of-contents where one must be, and the second octet of one whose
-- first was read as a tag of 0 (not checked, as the decoders only warn).
local function read_eoc()
    if get_byte() ~= 0 or get_byte() ~= 0 or failed then
        fail("no end-of-contents where the indefinite length ends")
    end
    return 2
end

local function eoc_second_octet()
    get_byte()
    return 1
end

-- The next `len` octets, or a failure when the message ends first.
local function take(len, why)
    local p = pos
    if len > last - p + 1 then
        pos = last + 1
        fail(why)
    end
    pos = p + len
    return sub(msg, p, p + len - 1)
end

-- The pieces of a constructed string: primitive pieces go to `piece(len)`,
-- constructed ones nest, up to MAX_NESTING levels; returns the octets counted.
local function walk_pieces(len, piece_tag, piece)
    local lens, counts, depth = { len }, { 0 }, 1
    while true do
        local count = counts[depth]
        if lens[depth] == INDEFINITE or count < lens[depth] then
            local tag, n = read_tag()
            count = count + n
            if tag == 0 and lens[depth] == INDEFINITE then
                count = count + eoc_second_octet()
            else
                local plen
                plen, n = read_length()
                count = count + n
                if tag == piece_tag then
                    piece(plen)
                    counts[depth] = count + plen
                elseif tag == piece_tag + CONSTRUCTED then
                    if depth >= MAX_NESTING then
                        fail("a constructed string nested more than " .. MAX_NESTING .. " levels")
                    end
                    counts[depth] = count
                    depth = depth + 1
                    lens[depth], counts[depth] = plen, 0
                else
                    fail("a piece of another type inside a constructed string")
                end
                goto next
            end
        end
        -- The level has ended.
        if depth == 1 then
            return count
        end
        depth = depth - 1
        counts[depth] = counts[depth] + count
        ::next::
    end
end

local function signed_octet()
    local c = get_byte()
    return c >= 0x80 and c - 0x100 or c
end

-- The leaves: each decodes a content of `len` octets under `tag` into its
-- value, and gives the octets it counted.
local leaves = {}

function leaves.INTEGER(_, len)
    if len > 4 then
        fail("an integer of more than four octets")
    end
    -- A content of 0 octets still reads one, as the decoders do.
    local v = signed_octet()
    for _ = 2, len do
        v = v * 256 + get_byte()
    end
    if failed then
        fail("the message ends inside an integer")
    end
    return v, len
end
leaves.ENUMERATED = leaves.INTEGER

function leaves.BOOLEAN(_, len)
    if len ~= 1 then
        fail("a boolean of other than one octet")
    end
    local c = get_byte()
    if failed then
        fail("the message ends inside a boolean")
    end
    return c ~= 0, 1
end

function leaves.NULL(_, len)
    if len ~= 0 then
        fail("a NULL with content")
    end
    return nil, 0
end

local REAL_BASE_BITS = { [0] = 1, [1] = 3, [2] = 4 }  -- bits 5 and 4 of the first octet: base 2, 8, 16

-- Binary reals, their special values, and zero.
function leaves.REAL(_, len)
    if len == 0 then
        return 0.0, 0
    end
    local first = get_byte()
    if len == 1 then
        if first == 0x40 then
            return math.huge, 1
        elseif first == 0x41 then
            return -math.huge, 1
        end
        fail("a one-octet real that is no special value")
    elseif first < 0x80 then
        fail("a decimal real")
    end
    -- The exponent: one to three octets, or a count octet and that many (a
    -- count of 0 still reads one); beyond four octets the first fall out.
    local exp, used, more = signed_octet(), first % 4 + 1, first % 4
    if used == 4 then
        used, more = exp % 256 + 1, exp % 256 - 1
        exp = signed_octet()
    end
    for _ = 1, more do
        exp = (exp * 256 + get_byte()) % 0x100000000
    end
    if exp >= 0x80000000 then
        exp = exp - 0x100000000
    end
    local mantissa = 0.0
    for _ = used + 2, len do
        if failed then
            break
        end
        mantissa = mantissa * 256 + get_byte()
    end
    local base_bits = REAL_BASE_BITS[bit(first, 5) * 2 + bit(first, 4)]
    if not base_bits then
        fail("a binary real of the base that is reserved")
    end
    local power = exp * base_bits + bit(first, 3) * 2 + bit(first, 2)
    local v = ldexp(mantissa, math.max(-100000, math.min(100000, power)))
    return bit(first, 6) == 1 and -v or v, len
end

leaves["OCTET STRING"] = function(tag, len)
    if bit(tag, 29) == 0 then  -- primitive
        local text = take(len, "the message ends inside a string")
        if failed then
            fail("the message ends inside a string")
        end
        return text, len
    end
    local pieces = {}
    len = walk_pieces(len, OCTET_STRING_TAG, function(plen)
        pieces[#pieces + 1] = take(plen, "the message ends inside a piece of a string")
    end)
    return concat(pieces), len
end

-- A bit string's value is its bits, "0" and "1".
leaves["BIT STRING"] = function(tag, len)
    local octets, unused
    if bit(tag, 29) == 0 then  -- primitive
        if len == 0 then
            fail("a bit string without its unused-bits octet")
        end
        unused = get_byte()
        octets = take(len - 1, "the message ends inside a bit string")
        if failed then
            fail("the message ends inside a bit string")
        end
    else
        local pieces = {}
        unused = 0
        len = walk_pieces(len, BIT_STRING_TAG, function(plen)
            if unused ~= 0 then
                fail("unused bits in a piece of a bit string that is not the last")
            end
            if plen ~= 0 then
                unused = get_byte()
                pieces[#pieces + 1] = take(plen - 1, "the message ends inside a piece of a bit string")
            end
        end)
        octets = concat(pieces)
    end
    if unused > #octets * 8 then
        fail("more unused bits than a bit string holds")
    end
    return bits_text(octets, #octets * 8 - unused), len
end

-- The text after a leaf's name as zoldump --brief shows it, without the
-- quotes of a text, an enumeration's number after its name.
local text_of = {
    INTEGER = tostring,
    ENUMERATED = function(v, t)
        local name = t.names and t.names[v]
        return name and format("%s (%d)", name, v) or tostring(v)
    end,
    BOOLEAN = function(v) return v and "TRUE" or "FALSE" end,
    NULL = function() return "NULL" end,
    REAL = real_text,
    ["OCTET STRING"] = function(v) return v:find("[^\32-\126]") and hex_text(v) or v end,
    ["BIT STRING"] = function(v) return "'" .. v .. "'B" end,
}

-- Whether Wireshark's own text of a leaf's value is another: it is the
-- same for integers, enumerations by name and texts that print, which
-- then need no label of their own.
local function text_differs(kind, v, t)
    if kind == "INTEGER" then
        return false
    elseif kind == "ENUMERATED" then
        return not (t.names and t.names[v])
    elseif kind == "OCTET STRING" then
        return v:find("[^\32-\126]") ~= nil
    end
    return true
end

---------------------------------------------------------------------------
-- Sequences, choices and lists, and the items of the tree: one for each
-- line of zoldump --brief.

local value  -- defined below; the three shapes call each other

-- An element of type `m.t` whose tag and length were read, shown as `name`.
local function element(m, tag, len, parent, name, from)
    if not m.explicit then
        return value(m.t, tag, len, parent, name, m.field, from)
    end
    local outer, n1, n2 = len
    tag, n1 = read_tag()
    if m.inner and tag ~= m.inner then
        fail(name .. " has another tag inside its explicit tag")
    end
    len, n2 = read_length()
    local count = n1 + n2 + value(m.t, tag, len, parent, name, m.field, from)
    if outer == INDEFINITE then
        count = count + read_eoc()
    end
    return count
end

local function sequence(t, len, item)
    local members = t.members
    if #members == 0 then
        if len == INDEFINITE then
            return read_eoc()
        elseif len ~= 0 then
            fail(t.name .. " is empty and has content")
        end
        return 0
    elseif t.allOptional and len == 0 then
        return 0
    end
    local from = pos
    local tag, count = read_tag()
    if t.allOptional and len == INDEFINITE and tag == 0 then
        return count + eoc_second_octet()
    end
    local n
    for i = 1, #members do
        local m = members[i]
        if m.accepts[tag] then
            local mlen
            mlen, n = read_length()
            count = count + n + element(m, tag, mlen, item, m.name, from)
            if i < #members then
                if m.tail and count == len then
                    return count
                end
                from = pos
                tag, n = read_tag()
                count = count + n
                if m.tail and len == INDEFINITE and tag == 0 then
                    return count + eoc_second_octet()
                end
            end
        elseif not m.optional then
            fail(t.name .. "." .. m.name .. " is missing")
        end
    end
    if len == INDEFINITE then
        return count + read_eoc()
    elseif count ~= len then
        fail(format("the members of %s take %d of its %d octets", t.name, count, len))
    end
    return count
end

local function list(t, len, item)
    local count, index = 0, 0
    while len == INDEFINITE or count < len do
        local from = pos
        local tag, n = read_tag()
        count = count + n
        if tag == 0 and len == INDEFINITE then
            return count + eoc_second_octet()
        elseif tag ~= SEQUENCE_TAG then
            fail("an element of " .. t.name .. " is no sequence")
        end
        local elen
        elen, n = read_length()
        count = count + n + value(t.element, tag, elen, item, "[" .. index .. "]", nil, from)
        index = index + 1
    end
    return count
end

-- The alternative that `tag` selects joins its name to the choice's
-- (`upTransMsg.order`); the choice's own field, hidden, holds its name.
local function choice(t, tag, len, parent, name, field, from)
    local alt = t.byTag[tag]
    if not alt then
        fail(format("%s has no alternative of the tag %s", t.name, tag_octets(tag)))
    end
    alternative = alternative or alt.name
    if parent and field then
        parent:add(field, msg_tvb(from - 1, 0), alt.name):set_hidden()
    end
    return element(alt, tag, len, parent, name and name .. "." .. alt.name or alt.name, from)
end

-- Decodes the content of a value of type `t` whose element began at `from`
-- with `tag` and `len`, and shows it under `parent` (none: only decode) as
-- `name`, with `field`; returns the octets counted.
function value(t, tag, len, parent, name, field, from)
    local kind = t.kind
    if kind == "CHOICE" then
        return choice(t, tag, len, parent, name, field, from)
    end
    local shape = kind == "SEQUENCE" and sequence or kind == "SET OF" and list
    if shape then
        local item
        if parent then
            -- Its extent as announced, until it is known.
            local size = len == INDEFINITE and last - from + 1 or math.min(pos - from + len, last - from + 1)
            local range = msg_tvb(from - 1, size)
            if field then
                item = parent:add(field, range)
                item:set_text(name)
            else
                item = parent:add(range, name)
            end
            lines = lines + 1
        end
        local before = lines
        local count = shape(t, len, item)
        if item then
            item:set_len(pos - from)
            if lines == before then
                item:append_text(kind == "SEQUENCE" and " {}" or " []")
            end
        end
        return count
    end
    local v, count = leaves[kind](tag, len)
    if parent then
        local range = msg_tvb(from - 1, pos - from)
        if v == nil then
            parent:add(field, range):set_text(name .. ": NULL")
        elseif text_differs(kind, v, t) or name:find(".", 1, true) then
            -- A text's field holds what is shown: its octets in hex where they do not all print.
            local text = text_of[kind](v, t)
            parent:add(field, range, kind == "OCTET STRING" and text or v, name .. ": " .. text)
        else
            parent:add(field, range, v)
        end
        lines = lines + 1
    end
    return count
end

-- The message of envelope `env`, its lines under `item`; returns the
-- octets the decoders count.
local function message(env, item)
    local from = pos
    local tag, n1 = read_tag()
    if env.kind ~= "CHOICE" and tag ~= env.tag then
        fail(env.name .. " has another tag")
    end
    local len, n2 = read_length()
    local count
    if env.kind == "CHOICE" then
        count = choice(env, tag, len, item, nil, nil, from)
    else
        count = sequence(env, len, item)
        if item and lines == 0 then
            item:add(msg_tvb(from - 1, pos - from), "{}")
        end
    end
    if failed then
        fail("the message ends inside a value")
    end
    return n1 + n2 + count
end

-- Decodes the `size` octets of `s` from `at` as `env`, and shows them
-- under `item` if given. Returns nil when they decode, else why not and
-- where decoding stopped; and the first alternative met.
local function decode(tvb, s, at, size, env, item)
    msg, pos, last, failed, msg_tvb, lines, alternative = s, at, at + size - 1, false, tvb, 0, nil
    local ok, result = pcall(message, env, item)
    if not ok then
        if type(result) ~= "table" or not result.failure then
            error(result, 0)
        end
        return result.failure, pos, alternative
    elseif result ~= size then
        return format("it decodes in %d of its %d octets", result, size), at + math.min(result, size), alternative
    end
    return nil, nil, alternative
end

---------------------------------------------------------------------------
-- Framing: the element at the start of the bytes, read as zol's AsnReadTlv
-- reads it, without decoding.

local COMPLETE, INCOMPLETE, MALFORMED = 1, 2, 3

-- The identifier and length octets at `at`: status, tag, length, their size.
local function read_header(s, at, last)
    if at > last then
        return INCOMPLETE
    end
    local first = byte(s, at)
    local tag, i = first * 0x1000000, at + 1
    if first % 32 == 31 then
        if i > last then
            return INCOMPLETE
        end
        local c = byte(s, i)
        tag, i = tag + c * 0x10000, i + 1
        if c >= 0x80 then
            if i > last then
                return INCOMPLETE
            end
            c = byte(s, i)
            tag, i = tag + c * 0x100, i + 1
            if c >= 0x80 then
                return MALFORMED
            end
        end
    end
    if i > last then
        return INCOMPLETE
    end
    local len = byte(s, i)
    i = i + 1
    if len == 0x80 then
        len = INDEFINITE
    elseif len > 0x80 then
        local count = len - 0x80
        if count > 4 then
            return MALFORMED
        elseif last - i + 1 < count then
            return INCOMPLETE
        end
        len = 0
        for _ = 1, count do
            len, i = len * 256 + byte(s, i), i + 1
        end
        if len == INDEFINITE then
            return MALFORMED
        end
    end
    if len == INDEFINITE and bit(first, 5) == 0 then
        return MALFORMED
    end
    return COMPLETE, tag, len, i - at
end

-- The whole element at `at`: status and size (for an incomplete one of
-- definite length the size it will have, else 0). The indefinite form ends
-- with the end-of-contents that closes the last level open.
local function read_tlv(s, at, last)
    local status, _, len, header = read_header(s, at, last)
    if status ~= COMPLETE then
        return status, 0
    elseif len ~= INDEFINITE then
        return len <= last - at + 1 - header and COMPLETE or INCOMPLETE, header + len
    end
    local open, p = 1, at + header
    while open > 0 do
        if p <= last and byte(s, p) == 0 then
            if p == last then
                return INCOMPLETE, 0
            elseif byte(s, p + 1) ~= 0 then
                return MALFORMED, 0
            end
            p, open = p + 2, open - 1
        else
            local h
            status, _, len, h = read_header(s, p, last)
            if status ~= COMPLETE then
                return status, 0
            end
            p = p + h
            if len == INDEFINITE then
                open = open + 1
            elseif len <= last - p + 1 then
                p = p + len
            else
                return INCOMPLETE, 0
            end
        end
    end
    return COMPLETE, p - at
end

-- The first octets of a tag, which tell the envelopes apart: the first,
-- and the second too where the first says that more follow. Of a tag
-- word, and of the tag at `p`.
local function tag_start(tag)
    local first = floor(tag / 0x1000000)
    return first % 32 == 31 and floor(tag / 0x10000) or first
end

local function start_at(s, p, last)
    if p > last then
        return nil
    end
    local first = byte(s, p)
    if first % 32 ~= 31 then
        return first
    end
    return p < last and first * 256 + byte(s, p + 1) or nil
end

local function starts_of(tags)
    local starts = {}
    for tag in pairs(tags) do
        starts[tag_start(tag)] = true
    end
    return starts
end

-- The envelopes, linked, with the starts of their own tags (a choice's
-- are its alternatives'), and of a sequence's second member; and those a
-- message may be by its direction.
for _, side in pairs(envelopes) do
    for i, name in ipairs(side) do
        local env = types[name]
        env.starts = starts_of(env.kind == "CHOICE" and env.byTag or { [env.tag] = true })
        if env.kind == "SEQUENCE" and env.members[2] then
            env.second_starts = starts_of(env.members[2].accepts)
        end
        side[i] = env
    end
end
local either = {}
for _, side in ipairs { envelopes.requests, envelopes.replies } do
    for _, env in ipairs(side) do
        either[#either + 1] = env
    end
end

-- The envelope of the message at `at`, as its first octets tell, as
-- zoldump tells it: the first of `candidates` that one of whose tags they
-- begin, and for a sequence, whose second member takes a tag that the
-- element after its first begins; else the first sequence whose tag they
-- begin.
local function envelope(s, at, last, candidates)
    local start = start_at(s, at, last)
    local fallback
    for _, env in ipairs(candidates) do
        if env.starts[start] then
            if env.kind == "CHOICE" then
                return env
            end
            fallback = fallback or env
            local status, _, _, header = read_header(s, at, last)
            if status == COMPLETE and env.second_starts then
                local first_status, first_size = read_tlv(s, at + header, last)
                if first_status == COMPLETE and env.second_starts[start_at(s, at + header + first_size, last)] then
                    return env
                end
            end
        end
    end
    return fallback
end

-- The envelopes of the direction: towards the port, requests; from it,
-- replies; either where both ends have it.
local function direction(pinfo)
    local port = pinfo.match_uint
    local to, from = pinfo.dst_port == port, pinfo.src_port == port
    if to and not from then
        return envelopes.requests, "request"
    elseif from and not to then
        return envelopes.replies, "reply"
    end
    return either, "envelope"
end

---------------------------------------------------------------------------
-- The dissector.

local function show_message(tvb, tree, s, at, size, env, info)
    local item = tree:add(zol, tvb(at - 1, size))
    item:add(f_message, tvb(at - 1, size), env.name)
    -- Without a tree (tshark's summary lines) an item has no text, and the
    -- message is only decoded, for the Info column.
    local why, stop, alternative = decode(tvb, s, at, size, env, item.text and item)
    local text = env.name .. (alternative and " " .. alternative or "")
    if why then
        item:add_tvb_expert_info(malformed, tvb(stop - 1, stop < at + size and 1 or 0),
            format("%s does not decode: %s (decoding stopped at octet %d of the message)", env.name, why, stop - at))
        text = text .. " [malformed]"
    end
    item:set_text(format("zol, %s, %d octets", text, size))
    info[#info + 1] = text
end

-- Octets from `from` to before `to` that begin no message.
local function show_bad(tvb, tree, from, to, why, info)
    local item = tree:add(zol, tvb(from - 1, to - from))
    item:set_text(format("zol, %d octets that begin no message", to - from))
    item:add_tvb_expert_info(malformed, tvb(from - 1, to - from), format("%s; %d octets skipped", why, to - from))
    info[#info + 1] = "[malformed]"
end

-- Messages are framed by their BER lengths. A message that does not decode
-- is shown as malformed and the next one read after it; octets that begin
-- no message are skipped, up to the next octet where a message of the
-- direction begins that decodes, and shown as one malformed run.
function zol.dissector(tvb, pinfo, tree)
    local size = tvb:len()
    local s = tvb:raw(0, size)
    local candidates, side = direction(pinfo)
    local info = {}
    local at, bad_from, bad_why = 1, nil, nil
    while at <= size do
        local status, total = read_tlv(s, at, size)
        local env = envelope(s, at, size, candidates)
        local known = status ~= MALFORMED and total <= MESSAGE_LIMIT
        if status == INCOMPLETE and known and (env or not start_at(s, at, size)) then
            -- The rest of it is in the segments to come.
            if bad_from then
                show_bad(tvb, tree, bad_from, at, bad_why, info)
            end
            pinfo.desegment_offset = at - 1
            pinfo.desegment_len = total > 0 and total - (size - at + 1) or DESEGMENT_ONE_MORE_SEGMENT
            break
        elseif status == COMPLETE and env and known and (not bad_from or not decode(tvb, s, at, total, env)) then
            if bad_from then
                show_bad(tvb, tree, bad_from, at, bad_why, info)
                bad_from = nil
            end
            show_message(tvb, tree, s, at, total, env, info)
            at = at + total
        else
            if not bad_from then
                bad_from = at
                if not env then
                    bad_why = format("the message here begins with %02X, which begins no %s", byte(s, at), side)
                elseif not known and status ~= MALFORMED then
                    bad_why = format("the message here has %d octets, more than the %d taken", total, MESSAGE_LIMIT)
                else
                    bad_why = "the message here is no well-formed BER element"
                end
            end
            at = at + 1
        end
    end
    if bad_from and at > size then
        show_bad(tvb, tree, bad_from, at, bad_why, info)
    end
    if #info > 0 then
        pinfo.cols.protocol = "zol"
        pinfo.cols.info = concat(info, ", ")
    end
    return size
end

-- The port: the preference, and Decode As.
local tcp_ports = DissectorTable.get("tcp.port")
zol.prefs.tcp_port = Pref.uint("TCP port", 0, "The TCP port of the zol host (0: none; or use Decode As)")
local registered_port = 0
function zol.prefs_changed()
    if registered_port ~= 0 then
        tcp_ports:remove(registered_port, zol)
    end
    registered_port = zol.prefs.tcp_port
    if registered_port ~= 0 then
        tcp_ports:add(registered_port, zol)
    end
end
tcp_ports:add_for_decode_as(zol)
