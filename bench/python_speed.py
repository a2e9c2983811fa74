#!/usr/bin/python3
"""Times the Python module zol against the json module on the benchmark's
burst: 10,000 order reports back to back (bench/cases.cpp, Report), one in
ten with its statics, the others with the dynamics alone.

In one run: decoding each message's BER into Python objects (zol.decode,
and zol.messages over the whole burst) against json.loads of the same
messages' JSON texts, and encoding each value (zol.encode) against
json.dumps. Best of several rounds, in ms for the whole burst.

    cmake --build build -j2 --target zol_python
    PYTHONPATH=build/python /usr/bin/python3 bench/python_speed.py

Run by hand; no test depends on its times.
"""
import json
import sys
import time

import zol

BURST = 10000
ROUNDS = 15


def report(i):
    """The order record of Report(i) in bench/cases.cpp."""
    rep = {
        "seqContext": {"seqNum": 104233 + i, "recNum": 7},
        "orderId": {"orderNo": "20240611-%07d" % (1234 + i), "speedIndex": 17},
    }
    if i % 10 == 0:
        rep["statics"] = {
            "secBoardId": {"secCode": "VOD.L", "boardId": "NORM"},
            "instrId": "EQTY",
            "userId": "TRADER01",
            "firmId": "FIRM07",
            "type": "limit",
            "buySell": "sell",
            "quantity": 5000,
            "price": {"value": 101.37, "decimals": 2},
            "fillType": "fillAny",
            "duration": "day",
            "brokerRef": "BR-7781/A",
            "purgeOnLogoff": False,
            "entryTime": {"date": 20240611, "time": 93015, "millisec": 250},
            "trdAccId": "ACC-000123",
            "details": {
                "visibleQuantity": 1000,
                "minFillQuantity": 100,
                "expiryTime": {"date": 20240611, "time": 163000},
                "isMarketMaker": False,
            },
            "execUserId": "MIFID-0044",
        }
    rep["dynamics"] = {
        "orderStatus": "open",
        "balance": 4000 - 100 * (i % 40),
        "matchValue": {"value": 101370.0, "decimals": 2},
        "averagePrice": {"value": 101.37 + 0.01 * (i % 50), "decimals": 4},
    }
    return {"orderRep": rep}


def best(runs):
    """The best time of each run in ms, the runs taking turns in every
    round so that a busy moment of the machine falls on all of them."""
    times = {name: [] for name in runs}
    for _ in range(ROUNDS):
        for name, run in runs.items():
            start = time.perf_counter()
            run()
            times[name].append(time.perf_counter() - start)
    return {name: min(t) * 1000 for name, t in times.items()}


def main():
    values = [report(i) for i in range(BURST)]
    messages = [zol.encode(v, "ZolQueryRep") for v in values]
    burst = b"".join(messages)
    texts = [json.dumps(v) for v in values]
    # The same values both ways: what zol decodes is what json reads.
    decoded = list(zol.messages(burst))
    if decoded != [json.loads(t) for t in texts]:
        sys.exit("python_speed.py: zol and json disagree about the burst")

    ms = best({
        "decode": lambda: [zol.decode(m, "ZolQueryRep") for m in messages],
        "stream": lambda: list(zol.messages(burst, "ZolQueryRep")),
        "loads": lambda: [json.loads(t) for t in texts],
        "encode": lambda: [zol.encode(v, "ZolQueryRep") for v in values],
        "dumps": lambda: [json.dumps(v) for v in values],
    })

    print("%d order reports, %d octets of BER, %d of JSON; best of %d rounds, Python %s"
          % (BURST, len(burst), sum(map(len, texts)), ROUNDS, sys.version.split()[0]))
    print()
    print("| burst of %d | zol | json | zol / json |" % BURST)
    print("|---|---|---|---|")
    for name, ours, theirs, what in [
        ("decode (zol.decode each)", ms["decode"], ms["loads"], "json.loads"),
        ("decode (zol.messages)", ms["stream"], ms["loads"], "json.loads"),
        ("encode (zol.encode each)", ms["encode"], ms["dumps"], "json.dumps"),
    ]:
        print("| %s vs %s | %.1f ms | %.1f ms | %.2f |" % (name, what, ours, theirs, ours / theirs))


if __name__ == "__main__":
    main()
