"""The Python module zol against zoldump, which shares its reader: the same
values, bytes, texts and failure lines for every sample and seed of the
fuzz corpus; failures of its own (encoding, type names, sources); and a
capture of 200 MB read in bounded memory.

Run by ctest (target python). By hand, from the build tree:
    ZOLDUMP=build/tools/zoldump PYTHONPATH=build/python /usr/bin/python3 -m pytest python/tests
"""
import io
import json
import os
import pathlib
import re
import struct
import subprocess
import sys
import warnings

import pytest

import zol

SOURCE = pathlib.Path(os.environ.get("ZOL_SOURCE", pathlib.Path(__file__).resolve().parents[2]))
ZOLDUMP = os.environ.get("ZOLDUMP", "zoldump")

# The type each fuzz target decodes, named as zoldump --type names it; None:
# the envelope the first octets call for. The targets of universal classes
# that no type of the protocol reads as they are tagged (REAL, OBJECT
# IDENTIFIER, PrintableString) are left out: zoldump cannot read them either.
TARGETS = {
    "fuzz_trans_req": None,
    "fuzz_trans_rep": None,
    "fuzz_query_req": None,
    "fuzz_query_rep": None,
    "fuzz_order_entry": "ZolOrderEntry",
    "fuzz_octs": "AsnTextStr",
    "fuzz_bits": "ZolOrderMethods",
}
FILES = [(f, None) for f in sorted((SOURCE / "samples").glob("*.ber"))] + [
    (f, t) for target, t in TARGETS.items() for f in sorted((SOURCE / "fuzz" / "corpus" / target).iterdir())
]


def zoldump(*args, data=None):
    return subprocess.run([ZOLDUMP, *args], input=data, capture_output=True)


def documents(text):
    """The JSON objects that zoldump --json prints one after another."""
    decoder, at, docs = json.JSONDecoder(), 0, []
    while text[at:].strip():
        doc, at = decoder.raw_decode(text, at + len(text[at:]) - len(text[at:].lstrip()))
        docs.append(doc)
    return docs


def said(run):
    """What zoldump said on standard error, as the module words it."""
    return run.stderr.decode().replace("zoldump: ", "").replace("(give --type)", "(give its type)")


@pytest.mark.parametrize("path,type", FILES, ids=lambda x: f"{x.parent.name}/{x.name}" if hasattr(x, "parent") else None)
def test_reads_as_zoldump_reads(path, type):
    data = path.read_bytes()
    run = zoldump("--json", *(["--type", type] if type else []), str(path))
    docs = documents(run.stdout.decode())
    got = []
    if run.returncode == 0:
        got = list(zol.messages(data, type))
        if len(docs) == 1:
            assert zol.decode(data, type) == docs[0]["value"]
    else:
        with pytest.raises(zol.DecodeError) as failure:
            for value in zol.messages(data, type):
                got.append(value)
        assert str(failure.value) + "\n" == said(run)
    assert got == [doc["value"] for doc in docs]
    if docs:
        # Each value encodes to zoldump --encode's bytes for it.
        encoded = zoldump("--encode", data=run.stdout).stdout
        assert b"".join(zol.encode(d["value"], d["type"]) for d in docs) == encoded


@pytest.mark.parametrize("path", sorted((SOURCE / "samples").glob("*.ber")), ids=lambda p: p.name)
def test_prints_as_zoldump_prints(path):
    data = path.read_bytes()
    it = zol.messages(data)
    next(it)
    head = "-- %s, offset 0, length %d --\n" % (it.type, it.length)
    assert zoldump(str(path)).stdout.decode() == head + zol.text(data) + "\n"
    assert zoldump("--brief", str(path)).stdout.decode() == head + zol.brief(data)


REPLY = (SOURCE / "samples" / "2-reply.ber").read_bytes()


# Bytes that do not decode: the text, code and offset of the DecodeError.
@pytest.mark.parametrize(
    "data,type,text,code,offset",
    [
        (REPLY[:-5], None, "BDecOctetString: ERROR - decoded past end of data\n"
         "the message at offset 0 does not decode as ZolTransRep (decoding stopped at offset 21)", -14, 21),
        (bytes.fromhex("30 0A 04 02 55 31 BF 82 1D 02 30"), None, "BDecLen: decoded past end of data\n"
         "the message at offset 0 does not decode as ZolQueryReq (decoding stopped at offset 11)", -9, 11),
        (bytes.fromhex("A0 01 00"), "ZolTransRep", "Expected an empty sequence\n"
         "the message at offset 0 does not decode as ZolTransRep (decoding stopped at offset 2)", -217, 2),
        (b"\xff\xff", None, "the message at offset 0 begins with FF, which begins no envelope (give its type)", None, 0),
        (REPLY, "ZolQueryRep", "ERROR - unexpected tag in CHOICE\n"
         "the message at offset 0 does not decode as ZolQueryRep (decoding stopped at offset 2)", -106, 2),
        (bytes.fromhex("B2 84 80 00 00 00"), None,
         "the message at offset 0 has 2147483654 octets, more than the 67108864 that zol takes", None, 0),
        (REPLY + b"\0", None, "the message at offset 0 is followed by 1 more octet (zol.messages reads messages back to back)", None, 26),
        (b"", None, "the input holds no bytes", None, 0),
    ],
    ids=["cut", "damaged", "wrong-content", "unknown", "wrong-type", "too-long", "trailing", "empty"],
)
def test_refuses_what_does_not_decode(data, type, text, code, offset):
    with pytest.raises(zol.DecodeError) as failure:
        zol.decode(data, type)
    assert (str(failure.value), failure.value.code, failure.value.offset) == (text, code, offset)


def test_goes_on_after_bad_messages_when_asked():
    capture = b"\xff\xff" + REPLY + b"\xa0\x01\x00" + REPLY
    with pytest.raises(zol.DecodeError):
        list(zol.messages(capture))
    with warnings.catch_warnings(record=True) as told:
        warnings.simplefilter("always")
        it = zol.messages(capture, keep_going=True)
        values = list(it)
    assert values == [zol.decode(REPLY)] * 2 and (it.good, it.bad, it.offset) == (2, 2, 31)
    assert [(str(w.message), w.message.code, w.message.offset, w.category) for w in told] == [
        ("the message at offset 0 begins with FF, which begins no envelope (give its type); 2 octets skipped",
         None, 0, zol.DecodeWarning),
        ("Expected an empty sequence\nthe message at offset 28 does not decode as ZolTransRep "
         "(decoding stopped at offset 30); 3 octets skipped", -217, 28, zol.DecodeWarning),
    ]
    assert zol.DecodeWarning.__module__ == "zol" and told[0].filename == __file__


def test_reads_a_binary_file_as_it_goes():
    capture = b"".join(p.read_bytes() for p in sorted((SOURCE / "samples").glob("*.ber")))
    it = zol.messages(io.BufferedReader(io.BytesIO(capture * 3000)))
    assert sum(1 for _ in it) == 12000 and it.offset + it.length == 3000 * len(capture)
    with pytest.raises(TypeError, match="binary mode"):
        list(zol.messages(io.StringIO("0")))
    with pytest.raises(TypeError, match="bytes or a binary file object, not str"):
        zol.messages("capture.ber")


# Values that do not fit their type: the EncodeError's text, naming the
# place as the JSON form does; and what the module takes beyond JSON.
@pytest.mark.parametrize(
    "value,type,text",
    [
        ({"replyOK": {"infoMessage": True}}, "ZolTransRep",
         'replyOK.infoMessage: expected a string or {"hex": "..."}, found True'),
        ({"seqNum": True}, "ZolSequenceContext", "seqNum: expected an integer, found True"),
        ({"seqNum": 2**64}, "ZolSequenceContext", "seqNum: the number does not fit in 32 bits, found 18446744073709551616"),
        ({"seqNum": 1, 7: 2}, "ZolSequenceContext", "the value: ZolSequenceContext has no member 7"),
        ({"replyOK": {}, "replyBad": {}}, "ZolTransRep",
         "the value: expected an object with one key, an alternative of ZolTransRep, found {'replyOK': {}, 'replyBad': {}}"),
        ({"bidList": [{"price": {"value": "1"}}]}, "ZolOrderbookByPriceRep",
         "the value: the required member seqNum of ZolOrderbookByPriceRep is missing"),
    ],
    ids=["bool-as-text", "bool-as-integer", "huge", "key-no-string", "two-alternatives", "missing"],
)
def test_refuses_what_does_not_fit(value, type, text):
    with pytest.raises(zol.EncodeError) as failure:
        zol.encode(value, type)
    assert str(failure.value) == text


def test_takes_bytes_and_tuples_as_well():
    assert zol.encode({"replyOK": {"infoMessage": b"\x00\xff"}}, "ZolTransRep") == bytes.fromhex("B2 04 04 02 00 FF")
    assert zol.decode(bytes.fromhex("B2 04 04 02 00 FF")) == {"replyOK": {"infoMessage": {"hex": "00FF"}}}
    listed = zol.encode([{"userIdx": 5, "secsSinceAction": 7}], "ZolUserUpdateActivityStatusSetOf")
    assert zol.encode(({"userIdx": 5, "secsSinceAction": 7},), "ZolUserUpdateActivityStatusSetOf") == listed


def test_names_types_as_zoldump_does():
    listed = zoldump("--list-types").stdout.decode().split("\n")[:-1]
    assert zol.types() == [line.split()[0] for line in listed]
    assert zol.types("SECBOARDREP") == ["ZolSecBoardRepDynamic", "ZolSecBoardRepStatic", "ZolSecBoardRep"]
    with pytest.raises(ValueError) as unknown:
        zol.decode(REPLY, "zolsecboardrp")
    assert str(unknown.value) == "no type named zolsecboardrp; did you mean ZolSecBoardRep? (see zol.types())"


def test_reads_200_mb_in_bounded_memory(tmp_path):
    # Replies of 1 MB each: a reader that held the capture would hold 200 MB.
    text = b"x" * (1 << 20)
    octets = b"\x04\x84" + struct.pack(">I", len(text)) + text
    reply = b"\xb2\x84" + struct.pack(">I", len(octets)) + octets
    capture = tmp_path / "capture.ber"
    with open(capture, "wb") as f:
        for _ in range(200):
            f.write(reply)
    # The peak is the child's own (VmHWM): its ru_maxrss would count the
    # pages of the test process it was forked from as well.
    script = (
        "import re, sys, zol\n"
        "print(sum(len(v['replyOK']['infoMessage']) for v in zol.messages(open(sys.argv[1], 'rb'))))\n"
        "print(re.search(r'VmHWM:\\s*(\\d+) kB', open('/proc/self/status').read())[1])\n"
    )
    run = subprocess.run([sys.executable, "-c", script, str(capture)], capture_output=True, text=True)
    taken, peak = map(int, run.stdout.split())
    assert taken == 200 << 20
    assert peak < 32 * 1024, "kB at the peak"


@pytest.mark.parametrize("doc", ["README.md", "docs/python.md"])
def test_documented_scripts_print_what_they_show(doc, tmp_path):
    # Each script that reads capture.ber, with the text shown after it.
    shown = re.findall(r"```python\n(.*?)```\n+```text\n(.*?)```", (SOURCE / doc).read_text(), re.S)
    scripts = [(script, text) for script, text in shown if "capture.ber" in script]
    assert scripts
    (tmp_path / "capture.ber").write_bytes(b"".join(p.read_bytes() for p in sorted((SOURCE / "samples").glob("*.ber"))))
    for script, text in scripts:
        assert subprocess.run([sys.executable, "-c", script], cwd=tmp_path, capture_output=True, text=True).stdout == text
