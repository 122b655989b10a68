#include "Utils/BWFolderCheck.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr qsizetype mostThreads = 8; // so many hanging folders hold up no other

enum class Answer { None, Folder, Nothing };

/// What the threads share; those that hang keep it for as long.
struct Questions {
    explicit Questions(const QList<QUrl> &folders) : urls(folders), answers(std::size_t(folders.size()), Answer::None)
    {
    }

    void answer()
    {
        std::unique_lock lock(mutex);
        while (next < answers.size()) {
            const std::size_t mine = next++;
            const QUrl url = urls[qsizetype(mine)];
            lock.unlock();
            const bool isFolder = BWFilePath::isFolder(url);
            lock.lock();
            answers[mine] = isFolder ? Answer::Folder : Answer::Nothing;
            ++answered;
            changed.notify_all();
        }
    }

    const QList<QUrl> urls;
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Answer> answers;
    std::size_t next = 0;
    std::size_t answered = 0;
};

} // namespace

QList<QUrl> BWFolderCheck::folders(const QList<QUrl> &urls, std::chrono::milliseconds patience)
{
    const auto questions = std::make_shared<Questions>(urls);
    for (qsizetype i = 0; i < std::min(urls.size(), mostThreads); ++i)
        std::thread([questions] { questions->answer(); }).detach();
    std::unique_lock lock(questions->mutex);
    questions->changed.wait_for(lock, patience,
                                [&questions] { return questions->answered == questions->answers.size(); });
    QList<QUrl> found;
    for (qsizetype i = 0; i < urls.size(); ++i) {
        const Answer answer = questions->answers[std::size_t(i)];
        if (answer == Answer::None)
            qCWarning(bwModel).noquote() << "The disk does not answer about" << urls[i].toDisplayString();
        if (answer != Answer::Nothing)
            found.append(urls[i]);
    }
    return found;
}
