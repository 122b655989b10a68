#include "Utils/BWFolderCheck.h"

#include "Utils/BWFilePath.h"
#include "Utils/BWLogging.h"
#include "Utils/BWWorkerPool.h"

#include <memory>
#include <mutex>
#include <vector>

namespace {

constexpr int mostThreads = 8; // so many hanging folders hold up no other

enum class Answer { None, Folder, Nothing };

struct Answers { // shared with the threads, as those that hang outlive the check
    std::mutex mutex;
    std::vector<Answer> list;
};

} // namespace

QList<QUrl> BWFolderCheck::folders(const QList<QUrl> &urls, std::chrono::milliseconds patience)
{
    const auto answers = std::make_shared<Answers>();
    answers->list.resize(std::size_t(urls.size()), Answer::None);
    BWWorkerPool pool(mostThreads, patience);
    for (std::size_t i = 0; i < answers->list.size(); ++i) {
        pool.run([answers, i, url = urls[qsizetype(i)]] {
            const Answer answer = BWFilePath::isFolder(url) ? Answer::Folder : Answer::Nothing;
            const std::lock_guard lock(answers->mutex);
            answers->list[i] = answer;
        });
    }
    pool.finish();
    QList<QUrl> found;
    const std::lock_guard lock(answers->mutex);
    for (qsizetype i = 0; i < urls.size(); ++i) {
        const Answer answer = answers->list[std::size_t(i)];
        if (answer == Answer::None)
            qCWarning(bwModel).noquote() << "The disk does not answer about" << urls[i].toDisplayString();
        if (answer != Answer::Nothing)
            found.append(urls[i]);
    }
    return found;
}
