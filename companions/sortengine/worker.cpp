// The second core; see worker.h.
#include "worker.h"

#include <csignal>

namespace {

Job *takeFirst(Worker *worker)
{
    Job *job = worker->first;
    if (!job) return nullptr;
    worker->first = job->next;
    if (!worker->first) worker->last = nullptr;
    job->state = JobState::Running;
    return job;
}

void takeOut(Worker *worker, const Job *job)
{
    Job *before = nullptr;
    for (Job *at = worker->first; at != job; at = at->next) before = at;
    (before ? before->next : worker->first) = job->next;
    if (worker->last == job) worker->last = before;
}

// Called and left with the mutex held.
void runJob(Worker *worker, Job *job)
{
    job->state = JobState::Running;
    pthread_mutex_unlock(&worker->mutex);
    job->run(job);
    pthread_mutex_lock(&worker->mutex);
    job->state = JobState::Done;
    pthread_cond_broadcast(&worker->changed);
}

void *work(void *argument)
{
    auto *worker = static_cast<Worker *>(argument);
    pthread_mutex_lock(&worker->mutex);
    while (!worker->stop) {
        if (Job *job = takeFirst(worker))
            runJob(worker, job);
        else
            pthread_cond_wait(&worker->changed, &worker->mutex);
    }
    pthread_mutex_unlock(&worker->mutex);
    return nullptr;
}

} // namespace

void openWorker(Worker *worker)
{
    pthread_mutex_init(&worker->mutex, nullptr);
    pthread_cond_init(&worker->changed, nullptr);
    worker->first = worker->last = nullptr;
    worker->started = worker->refused = worker->stop = false;
    worker->cancel = false;
}

void submit(Worker *worker, Job *job)
{
    pthread_mutex_lock(&worker->mutex);
    if (!worker->started && !worker->refused) {
        // The program's signals are not this thread's business.
        sigset_t all, before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        worker->started = pthread_create(&worker->thread, nullptr, work, worker) == 0;
        worker->refused = !worker->started;
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    job->next = nullptr;
    job->error = 0;
    job->state = JobState::Queued;
    (worker->last ? worker->last->next : worker->first) = job;
    worker->last = job;
    pthread_cond_broadcast(&worker->changed);
    pthread_mutex_unlock(&worker->mutex);
}

uint32_t waitFor(Worker *worker, Job *job)
{
    pthread_mutex_lock(&worker->mutex);
    if (job->state == JobState::Queued) {
        takeOut(worker, job);
        runJob(worker, job);
    }
    while (job->state == JobState::Running) pthread_cond_wait(&worker->changed, &worker->mutex);
    uint32_t error = job->state == JobState::Done ? job->error : 0;
    pthread_mutex_unlock(&worker->mutex);
    return error;
}

void closeWorker(Worker *worker)
{
    worker->cancel = true;
    pthread_mutex_lock(&worker->mutex);
    worker->stop = true;
    for (Job *job = worker->first; job; job = job->next) job->state = JobState::Idle;
    worker->first = worker->last = nullptr;
    pthread_cond_broadcast(&worker->changed);
    pthread_mutex_unlock(&worker->mutex);
    if (worker->started) pthread_join(worker->thread, nullptr);
    pthread_cond_destroy(&worker->changed);
    pthread_mutex_destroy(&worker->mutex);
}
