#include "messages.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace zmsg {

using namespace Zol;

namespace {

template <class P>
void SetFixed(P*& p, double value, int decimals) {
    p = new P;
    p->value = value;
    p->decimals = new AsnInt(decimals);
}

template <class T>
T* Alt(AsnType* choice, const char* name) {
    AsnType* v = choice->_getref(name, true);
    if (!v)
        std::abort();  // the schema lost the alternative
    return static_cast<T*>(v);
}

// Whether any name along the alias chain of `d` contains `word`.
bool NamedLike(const AsnTypeDesc* d, const char* word) {
    for (; d; d = AsnAliasBase(d))
        if (d->name && std::strstr(d->name, word))
            return true;
    return false;
}

// Fills every member of `v`, optional ones included, through the
// descriptors, with values of plausible sizes: texts of 10 to 25 octets,
// prices with full mantissas, dates and times where the type says so.
struct FillAll {
    int k = 0;

    void Fill(AsnType* v, const AsnTypeDesc* d, const char* member) {
        const AsnTypeDesc* r = AsnResolved(d);
        ++k;
        switch (r->type) {
        case AsnTypeDesc::SEQUENCE:
            for (const AsnSe_MemberDesc* m = static_cast<const AsnSe_TypeDesc*>(r)->members; m->name; ++m)
                Fill(v->_getref(m->name, true), m->desc, m->name);
            break;
        case AsnTypeDesc::CHOICE: {
            const AsnChoiceMemberDesc& alt = static_cast<const AsnChoiceTypeDesc*>(r)->members[0];
            Fill(v->_getref(alt.name, true), alt.desc, alt.name);
            break;
        }
        case AsnTypeDesc::SET_OF:
            for (int i = 0; i < 3; ++i)
                Fill(v->_getref(("insert " + std::to_string(i)).c_str(), true),
                     static_cast<const AsnListTypeDesc*>(r)->base, member);
            break;
        case AsnTypeDesc::INTEGER:
            static_cast<AsnInt*>(v)->value = std::strcmp(member, "decimals") == 0 ? 2
                                           : NamedLike(d, "Date")             ? 20240611
                                           : NamedLike(d, "Time")             ? 93015
                                                                              : 1000 + 37 * k;
            break;
        case AsnTypeDesc::ENUMERATED: {
            const AsnNameDesc* names = d->getnames();
            int n = 0;
            while (names[n].name)
                ++n;
            static_cast<AsnInt*>(v)->value = names[k % n].value;
            break;
        }
        case AsnTypeDesc::BOOLEAN:
            static_cast<AsnBool*>(v)->value = k % 2 == 0;
            break;
        case AsnTypeDesc::REAL:
            static_cast<AsnReal*>(v)->value = 100.0 + 0.37 * k;
            break;
        case AsnTypeDesc::OCTET_STRING: {
            std::string text = std::string(member) + " " + std::to_string(4000 + k);
            static_cast<AsnOcts*>(v)->ReSet(text.c_str());
            break;
        }
        case AsnTypeDesc::BIT_STRING: {
            auto* bits = static_cast<AsnBits*>(v);
            bits->ReSet(size_t(29));
            for (size_t b : {0, 1, 3, 8, 12, 16, 20, 25, 28})
                bits->SetBit(b);
            break;
        }
        default:
            break;
        }
    }
};

}  // namespace

std::unique_ptr<ZolTransReq> NewOrder() {
    auto req = std::make_unique<ZolTransReq>();
    req->userId = "TRADER01";
    req->upTransMsg = new ZolTransReqChoice;
    ZolOrder* order = Alt<ZolOrder>(req->upTransMsg, "order");
    ZolOrderEntry* e = order->order = new ZolOrderEntry;
    e->secBoardId = new ZolSecOptBoardId;
    e->secBoardId->secCode = "VOD.L";
    e->secBoardId->boardId = new ZolBoardId("NORM");
    e->type = ZolOrderType::limit;
    e->buySell = ZolOrderVerb::buy;
    e->quantity = 5000;
    e->visibleQuantity = new ZolQuantity(1000);
    SetFixed(e->price, 101.37, 2);
    e->duration = ZolOrderDuration::day;
    e->trdAccId = new ZolTrdAccId("ACC-000123");
    e->brokerRef = new ZolBrokerRef("BR-7781/A");
    e->purgeOnLogoff = new ZolBoolean(true);
    e->positionType = new ZolPositionType(ZolPositionType::openingTrade);
    e->execUserId = new ZolUserMifidId("MIFID-0044");
    return req;
}

std::unique_ptr<ZolTransRep> ReplyOK() {
    auto rep = std::make_unique<ZolTransRep>();
    ZolReplyOK* ok = Alt<ZolReplyOK>(rep.get(), "replyOK");
    ok->infoMessage = "Order 20240611-0001234 accepted";
    ok->extraInfo = new ZolTextStr("queued at 101.37 behind 3 orders");
    ok->replyHint = new ZolReplyHintType(0);
    return rep;
}

std::unique_ptr<ZolQueryRep> OrderRecord() {
    auto rep = std::make_unique<ZolQueryRep>();
    ZolOrderRep* o = Alt<ZolOrderRep>(rep.get(), "orderRep");
    o->seqContext = new ZolSequenceContext;
    o->seqContext->seqNum = new AsnSequenceNumber(104233);
    o->seqContext->recNum = new AsnSequenceNumber(7);
    o->orderId = new ZolOrderId;
    o->orderId->orderNo = "20240611-0001234";
    o->orderId->speedIndex = new ZolInteger(17);

    ZolOrderRepStatic* s = o->statics = new ZolOrderRepStatic;
    s->secBoardId = new ZolSecBoardId;
    s->secBoardId->secCode = "VOD.L";
    s->secBoardId->boardId = "NORM";
    s->instrId = "EQTY";
    s->userId = "TRADER01";
    s->firmId = "FIRM07";
    s->type = ZolOrderType::limit;
    s->buySell = ZolOrderVerb::sell;
    s->quantity = 5000;
    SetFixed(s->price, 101.37, 2);
    s->fillType = ZolOrderFillType::fillAny;
    s->duration = ZolOrderDuration::day;
    s->brokerRef = new ZolBrokerRef("BR-7781/A");
    s->purgeOnLogoff = new ZolBoolean(false);
    s->entryTime = new ZolDateTimeMS;
    s->entryTime->date = 20240611;
    s->entryTime->time = 93015;
    s->entryTime->millisec = 250;
    s->trdAccId = new ZolTrdAccId("ACC-000123");
    s->details = new ZolOrderRepStaticDetails;
    s->details->visibleQuantity = new ZolQuantity(1000);
    s->details->minFillQuantity = new ZolQuantity(100);
    s->details->expiryTime = new ZolDateTime;
    s->details->expiryTime->date = 20240611;
    s->details->expiryTime->time = 163000;
    s->details->isMarketMaker = new ZolBoolean(false);
    s->execUserId = new ZolUserMifidId("MIFID-0044");

    ZolOrderRepDynamic* d = o->dynamics = new ZolOrderRepDynamic;
    d->orderStatus = ZolOrderStatus::open;
    d->balance = 4000;
    SetFixed(d->matchValue, 101370.0, 2);
    SetFixed(d->averagePrice, 101.37, 4);
    return rep;
}


std::unique_ptr<ZolSecBoardRep> FullSecBoard() {
    auto rep = std::make_unique<ZolSecBoardRep>();
    FillAll().Fill(rep.get(), rep->_getdesc(), "secBoardRep");
    return rep;
}

std::unique_ptr<ZolOrderbookByPriceRep> Book() {
    auto rep = std::make_unique<ZolOrderbookByPriceRep>();
    rep->seqNum = 88123;
    rep->secBoardId = new ZolSecBoardId;
    rep->secBoardId->secCode = "VOD.L";
    rep->secBoardId->boardId = "NORM";
    for (int side = 0; side < 2; ++side) {
        ZolPricePointList& list = side ? rep->offerList : rep->bidList;
        for (int i = 0; i < 200; ++i) {
            ZolPricePoint* p = list.Append();
            SetFixed(p->price, side ? 101.38 + 0.01 * i : 101.37 - 0.01 * i, 2);
            p->userDepth = i % 5 == 0 ? 500 : 0;
            p->userHasBest = i == 0;
            p->depth = new ZolQuantity(1000 + 250 * (i % 17));
            p->numOrders = new ZolInteger(1 + i % 7);
            p->numFirms = new ZolInteger(1 + i % 3);
        }
    }
    rep->numOtherOpenOrders = 12;
    return rep;
}

std::unique_ptr<ZolQueryRep> Report(long i) {
    std::unique_ptr<ZolQueryRep> rep = OrderRecord();
    ZolOrderRep* o = rep->orderRep;
    *o->seqContext->seqNum = AsnSequenceNumber(int32_t(104233 + i));
    char orderNo[32];
    std::snprintf(orderNo, sizeof orderNo, "20240611-%07ld", 1234 + i);
    o->orderId->orderNo = orderNo;
    if (i % 10 != 0) {
        delete o->statics;
        o->statics = nullptr;
    }
    o->dynamics->balance = int32_t(4000 - 100 * (i % 40));
    o->dynamics->averagePrice->value = 101.37 + 0.01 * double(i % 50);
    return rep;
}

}  // namespace zmsg
