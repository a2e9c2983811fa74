// The benchmark's worked messages, which the tests use too, each built
// member by member as a program builds it: a new order, a reply, an order
// record with statics and dynamics, a security board with every member
// set, an order book of 200 price levels a side, and the order reports of
// a burst.
#pragma once

#include <memory>

#include <zol/zol.h>

namespace zmsg {

// A limit order to buy 5000 at 101.37, as a client sends it.
std::unique_ptr<Zol::ZolTransReq> NewOrder();
std::unique_ptr<Zol::ZolTransRep> ReplyOK();
// An order record as the host reports it: statics with their details, and
// the dynamics after a partial fill.
std::unique_ptr<Zol::ZolQueryRep> OrderRecord();
// Every member set, optional ones included, with values of plausible
// sizes.
std::unique_ptr<Zol::ZolSecBoardRep> FullSecBoard();
// 200 price levels on each side around 101.37, a tick of 0.01 apart.
std::unique_ptr<Zol::ZolOrderbookByPriceRep> Book();
// Order `i` of a burst of reports: OrderRecord's with another number,
// balance and price; one in ten with its statics, the others with the
// dynamics alone, as a report after a fill carries them.
std::unique_ptr<Zol::ZolQueryRep> Report(long i);

}  // namespace zmsg
