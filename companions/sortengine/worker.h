// The second core: a thread of the sort's own that takes jobs in the order they came.
//
// Whoever waits for a job that has not begun does it itself. So nothing depends on the thread: if
// none can be had, the sort just takes longer. Files' routines are never called here, only sorting
// and the engine's own reading and writing.
#pragma once

#include <atomic>
#include <cstdint>
#include <pthread.h>

enum class JobState : uint8_t { Idle, Queued, Running, Done };

struct Job {
    void (*run)(Job *);
    Job *next;
    JobState state;
    uint32_t error; // what the job found, valid once waited for
};

struct Worker {
    pthread_mutex_t mutex;
    pthread_cond_t changed;
    pthread_t thread;
    Job *first, *last;
    bool started, refused, stop;
    std::atomic<bool> cancel; // jobs look at it and leave early
};

void openWorker(Worker *worker);
void submit(Worker *worker, Job *job);
uint32_t waitFor(Worker *worker, Job *job); // the job's error; an idle job has none

// Cancels what runs, drops what has not begun, ends the thread.
void closeWorker(Worker *worker);
