// The second core; see worker.h.
#include "worker.h"

#include <csignal>

namespace {

// Holds the worker's mutex with signals blocked. A signal that ends the run unit abandons the sort
// out of its handler (closeWorker): in a thread that held the mutex it would wait for itself.
class WorkerLock {
public:
    explicit WorkerLock(Worker *worker) : worker_(worker) { take(); }
    ~WorkerLock() { release(); }
    void take()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
        pthread_mutex_lock(&worker_->mutex);
    }
    void release()
    {
        pthread_mutex_unlock(&worker_->mutex);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    WorkerLock(const WorkerLock &) = delete;
    WorkerLock &operator=(const WorkerLock &) = delete;

private:
    Worker *worker_;
    sigset_t before_;
};

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
void runJob(Worker *worker, Job *job, WorkerLock &lock)
{
    job->state = JobState::Running;
    lock.release();
    job->run(job);
    lock.take();
    job->state = JobState::Done;
    pthread_cond_broadcast(&worker->changed);
}

void *work(void *argument)
{
    auto *worker = static_cast<Worker *>(argument);
    WorkerLock lock(worker);
    while (!worker->stop) {
        if (Job *job = takeFirst(worker))
            runJob(worker, job, lock);
        else
            pthread_cond_wait(&worker->changed, &worker->mutex);
    }
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
    WorkerLock lock(worker);
    if (!worker->started && !worker->refused) {
        // It begins with all signals blocked: the program's are not this thread's business.
        worker->started = pthread_create(&worker->thread, nullptr, work, worker) == 0;
        worker->refused = !worker->started;
    }
    job->next = nullptr;
    job->error = 0;
    job->state = JobState::Queued;
    (worker->last ? worker->last->next : worker->first) = job;
    worker->last = job;
    pthread_cond_broadcast(&worker->changed);
}

uint32_t waitFor(Worker *worker, Job *job)
{
    WorkerLock lock(worker);
    if (job->state == JobState::Queued) {
        takeOut(worker, job);
        runJob(worker, job, lock);
    }
    while (job->state == JobState::Running) pthread_cond_wait(&worker->changed, &worker->mutex);
    return job->state == JobState::Done ? job->error : 0;
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
