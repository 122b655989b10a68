#include "media/BWLibav.h"

#include <array>
#include <mutex>
#include <QFile>

void BWLibav::silence()
{
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_FATAL); });
}

BWLibav::Input BWLibav::openInput(const QString &path, int &result)
{
    silence();
    AVFormatContext *context = nullptr;
    result = avformat_open_input(&context, QFile::encodeName(path).constData(), nullptr, nullptr);
    return result < 0 ? nullptr : Input(context);
}

BWLibav::Output BWLibav::createMov(const QString &path, int &result)
{
    silence();
    const QByteArray name = QFile::encodeName(path);
    AVFormatContext *context = nullptr;
    result = avformat_alloc_output_context2(&context, nullptr, "mov", name.constData());
    if (result < 0)
        return nullptr;
    Output output(context);
    result = avio_open(&context->pb, name.constData(), AVIO_FLAG_WRITE);
    return result < 0 ? nullptr : std::move(output);
}

QString BWLibav::errorText(int error)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return QString::fromLocal8Bit(text.data());
}
