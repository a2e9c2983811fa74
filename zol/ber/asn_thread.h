// What the library keeps for each thread, and the end of a thread.
//
// Every piece of the library's mutable state belongs to the thread that uses
// it. Small pieces are `__thread` variables of the initial-exec model
// (ZOL_INITIAL_EXEC): one load from a fixed offset from the thread pointer,
// where the default model of a shared library calls __tls_get_addr on every
// access. `__thread` rather than thread_local: an access to a thread_local
// declared extern first asks whether the variable needs initialising, and
// none of these does. The initial-exec model takes its room from a reserve
// of about a kilobyte when the library is loaded at run time (a Python
// extension, a plugin), so the library's thread-local storage is kept to a
// few hundred bytes; larger pieces (the block of the two-argument Encode,
// the display buffers) live on the heap, one block per thread, made when
// the thread first needs it.
//
// What a thread holds on the heap is given back when it ends, after its
// thread_local objects have been destroyed, so that their destructors may
// still encode, decode and print. A POSIX thread's end is told by the
// destructor of a key of the threads library, which runs after those of
// thread_local objects. The main thread's list does not run at exit: what
// it holds stays reachable until the process ends.
#pragma once

#include <new>

#define ZOL_INITIAL_EXEC __attribute__((tls_model("initial-exec")))

// A node of a thread's list of things to do when it ends; the owner of some
// per-thread memory keeps one in its thread-local storage, initialised with
// its `run`.
struct AsnThreadEnd {
    void (*run)(AsnThreadEnd* self);
    AsnThreadEnd* next;
    bool linked;
};

// Links `node` into the calling thread's list, unless it is there already.
// The last node linked runs first, and is unlinked before it runs, so that
// it may link itself again. Without the threads library's key (none left)
// nothing is linked, and what the thread holds stays when it ends.
void AsnAtThreadEnd(AsnThreadEnd& node);

// One object of type T for each thread that asks for it, on the heap:
// value-initialised on the thread's first call of Get and destroyed when
// the thread ends. T's constructor must not throw.
template <class T>
class AsnPerThread {
public:
    // The calling thread's object, or null if it could not be made.
    static T* Get() {
        if (__builtin_expect(slot.object != nullptr, 1))
            return slot.object;
        return Make();
    }

private:
    struct Slot {
        AsnThreadEnd end{End, nullptr, false};
        T* object = nullptr;
    };
    static __thread Slot slot ZOL_INITIAL_EXEC;

    static T* Make() {
        T* object = new (std::nothrow) T();
        if (object) {
            slot.object = object;
            AsnAtThreadEnd(slot.end);
        }
        return object;
    }
    static void End(AsnThreadEnd*) {
        delete slot.object;
        slot.object = nullptr;
    }
};

template <class T>
__thread typename AsnPerThread<T>::Slot AsnPerThread<T>::slot ZOL_INITIAL_EXEC;
