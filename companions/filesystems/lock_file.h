// NAME.mdb-lock: the file in which LMDB's readers and writers of a store find each other.
//
// LMDB makes it for whoever opens the store first, and writers need it as much as readers. Where an
// administrator has only looked at the file, it would be his, and the program that owns the store
// could write it no more. So it is made here, before LMDB opens the store, with owner and mode of
// the store. Who may not give a file away makes it one that all who may read the store can use.
#pragma once

namespace filesystems {

// Makes the lock file of a store if there is none. Whatever fails is left to LMDB to tell.
void makeLockFile(const char *store);

// May this user write the lock file, if there is one?
bool lockFileIsUsable(const char *store);

} // namespace filesystems
