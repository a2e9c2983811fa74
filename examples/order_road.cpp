// The road of one order, as a trading client and the exchange's host write
// it. The client enters an order; the host decodes it and answers; the
// client reads the answer, asks for its orders and merges the host's order
// reports, statics first and dynamics later, into the record it holds.
#include <cstdio>
#include <iostream>
#include <string>

#include <zol/zol.h>

using namespace Zol;

namespace {

// One side's outgoing bytes: what would travel over the connection.
std::string Send(const AsnType& message) {
    static char block[4096];
    size_t length = 0;
    char* bytes = AsnBuffer::Encode(block, sizeof block, message, length);
    if (!bytes)
        return std::string();
    return std::string(bytes, length);
}

void ShowWire(const char* who, const std::string& wire) {
    std::printf("%s sends %zu octets:", who, wire.size());
    for (unsigned char c : wire)
        std::printf(" %02X", c);
    std::printf("\n");
}

// Client: the order request, built through the public members.
ZolTransReq MakeOrder() {
    ZolTransReq request;
    request.userId = "TRADER1";
    request.upTransMsg = new ZolTransReqChoice;
    request.upTransMsg->choiceId = ZolTransReqChoice::orderCid;
    request.upTransMsg->order = new ZolOrder;
    ZolOrderEntry* entry = request.upTransMsg->order->order = new ZolOrderEntry;
    entry->secBoardId = new ZolSecOptBoardId;
    entry->secBoardId->secCode = "ABC";
    entry->secBoardId->boardId = new ZolBoardId("MAIN");
    entry->type = ZolOrderType::limit;
    entry->buySell = ZolOrderVerb::buy;
    entry->quantity = 500;
    entry->price = new ZolPrice;
    entry->price->value = 101.25;
    entry->price->decimals = new AsnInt(2);
    entry->duration = ZolOrderDuration::day;
    return request;
}

// Host: decode the request, act on the order, answer.
std::string HostTakesOrder(const std::string& wire) {
    ZolTransReq request;
    if (!AsnBuffer::Decode(wire.data(), wire.size(), request))
        return std::string();
    ZolTransRep reply;
    if (request.upTransMsg->choiceId == ZolTransReqChoice::orderCid) {
        const ZolOrderEntry& e = *request.upTransMsg->order->order;
        std::printf("host: %s %s %d %s at %.2f\n", request.userId.octs,
                    e.buySell == ZolOrderVerb::buy ? "buys" : "sells", e.quantity.value,
                    e.secBoardId->secCode.octs, e.price ? e.price->value.value : 0.0);
        reply.choiceId = ZolTransRep::replyOKCid;
        reply.replyOK = new ZolReplyOK;
        reply.replyOK->infoMessage = "Order entered";
        reply.replyOK->extraInfo = new ZolTextStr("ORD1001");
    } else {
        reply.choiceId = ZolTransRep::replyBadCid;
        reply.replyBad = new ZolReplyBad;
        reply.replyBad->infoMessage = "Not an order";
    }
    return Send(reply);
}

// Client: the query for its orders, built through _getref by name.
ZolQueryReq MakeOrderQuery() {
    ZolQueryReq query;
    static_cast<AsnOcts*>(query._getref("userId"))->ReSet("TRADER1");
    query._getref("upQueryMsg", true)->_getref("orderReq", true)->_getref("seqContext", true);
    return query;
}

// Host: two reports of the order, the whole record and then a change.
std::string HostReportsOrder(bool first) {
    ZolQueryRep rep;
    rep.choiceId = ZolQueryRep::orderRepCid;
    ZolOrderRep* r = rep.orderRep = new ZolOrderRep;
    r->seqContext = new ZolSequenceContext;
    r->orderId = new ZolOrderId;
    r->orderId->orderNo = "ORD1001";
    if (first) {
        ZolOrderRepStatic* s = r->statics = new ZolOrderRepStatic;
        s->secBoardId = new ZolSecBoardId;
        s->secBoardId->secCode = "ABC";
        s->secBoardId->boardId = "MAIN";
        s->instrId = "EQ";
        s->userId = "TRADER1";
        s->firmId = "FIRM1";
        s->type = ZolOrderType::limit;
        s->buySell = ZolOrderVerb::buy;
        s->quantity = 500;
        s->price = new ZolPrice;
        s->price->value = 101.25;
        s->fillType = ZolOrderFillType::fillAny;
        s->duration = ZolOrderDuration::day;
        s->entryTime = new ZolDateTimeMS;
        s->entryTime->date = 20240315;
        s->entryTime->time = 93012;
        s->entryTime->millisec = 250;
    }
    r->dynamics = new ZolOrderRepDynamic;
    r->dynamics->orderStatus = ZolOrderStatus::open;
    r->dynamics->balance = first ? 500 : 300;
    if (!first) {
        r->dynamics->averagePrice = new ZolPrice;
        r->dynamics->averagePrice->value = 101.2;
    }
    return Send(rep);
}

}  // namespace

int main() {
    std::string wire = Send(MakeOrder());
    ShowWire("client", wire);

    std::string answer = HostTakesOrder(wire);
    ShowWire("host", answer);
    ZolTransRep reply;
    if (!AsnBuffer::Decode(answer.data(), answer.size(), reply) || reply.choiceId != ZolTransRep::replyOKCid)
        return 1;
    std::printf("client: %s, order %s\n", reply.replyOK->infoMessage.octs, reply.replyOK->extraInfo->octs);

    ShowWire("client", Send(MakeOrderQuery()));

    // The client holds one record per order and merges every report into
    // it: what a report lacks, the record keeps.
    ZolOrderRep held;
    for (bool first : {true, false}) {
        std::string report = HostReportsOrder(first);
        ShowWire("host", report);
        ZolQueryRep rep;
        if (!AsnBuffer::Decode(report.data(), report.size(), rep) || rep.choiceId != ZolQueryRep::orderRepCid)
            return 1;
        held |= *rep.orderRep;
        std::printf("client: order %s, %d of %d left, average price %.2f\n", held.orderId->orderNo.octs,
                    held.dynamics->balance.value, held.statics->quantity.value,
                    held.dynamics->averagePrice ? held.dynamics->averagePrice->value.value : 0.0);
    }
    std::cout << "client's record:\n" << *held.dynamics << std::endl;

    // A reply cut short fails: the library writes its lines to standard
    // error and Decode gives 0.
    ZolTransRep cut;
    if (AsnBuffer::Decode(answer.data(), answer.size() - 3, cut))
        return 1;
    std::printf("client: a reply cut short does not decode\n");
    return 0;
}
