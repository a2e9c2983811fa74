#include "zol/ber/asn_thread.h"

#include <pthread.h>

namespace {

__thread AsnThreadEnd* ends ZOL_INITIAL_EXEC;  // the calling thread's list

void RunEnds(void*) {
    while (AsnThreadEnd* node = ends) {
        ends = node->next;
        node->linked = false;
        node->run(node);
    }
}

// The key whose destructor runs a thread's list. It is made on first use,
// since initialisers that run while the library loads may come first, and
// deleted when the library is unloaded, so that no thread calls into code
// that is gone.
struct EndKey {
    pthread_key_t key;
    bool made;
    EndKey() : made(pthread_key_create(&key, RunEnds) == 0) {}
    ~EndKey() {
        if (made)
            pthread_key_delete(key);
    }
};

const EndKey& TheKey() {
    static const EndKey key;
    return key;
}

}  // namespace

void AsnAtThreadEnd(AsnThreadEnd& node) {
    if (node.linked)
        return;
    const EndKey& k = TheKey();
    // The key's destructor runs only for a thread whose value is not null.
    if (!k.made || (!ends && pthread_setspecific(k.key, &ends) != 0))
        return;
    node.next = ends;
    node.linked = true;
    ends = &node;
}
