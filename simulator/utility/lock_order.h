// Watches in which order each thread takes locks: two locks that are waited for in both orders can bring two threads to
// a standstill. Only the order is kept here; what a lock is stands in locks.cpp.
#ifndef SIMULATOR_UTILITY_LOCK_ORDER_H
#define SIMULATOR_UTILITY_LOCK_ORDER_H

#include <string>

namespace simulator {

/** A lock in the eyes of the order: a number never used twice, and a name for people. */
unsigned long NewOrderedLock(const std::string& name);
void ForgetOrderedLock(unsigned long lock);

/**
 * The calling thread is about to wait for the lock: complains, once for each pair, when it holds a lock that someone
 * waited for while holding this one. place says where, for the complaint.
 */
void AboutToWait(unsigned long lock, const std::string& place);

/** The calling thread has taken the lock, waiting or not, and has given it back. */
void HasTaken(unsigned long lock);
void HasGivenBack(unsigned long lock);

/** Whether the calling thread holds any lock: AboutToWait has something to do. */
bool HoldsLocks();

}  // namespace simulator

#endif
