#include "oxMovieWriter.h"

#include "oxDisplayCurve.h"

#include "oxImageEncoder.h"
#include "oxPartialFiles.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <memory>
#include <cstdio>
#include <vector>

namespace {
std::string ffmpegError(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {0};
    av_strerror(code, text, sizeof(text));
    return text;
}
} // namespace

oxMovieWriter::~oxMovieWriter() { abandon(); }

void oxMovieWriter::release()
{
    if (m_format) {
        if (m_format->pb)
            avio_closep(&m_format->pb);
        avformat_free_context(m_format);
        m_format = nullptr;
    }
    avcodec_free_context(&m_codec);
    av_frame_free(&m_frame);
    av_packet_free(&m_packet);
    sws_freeContext(m_scaler);
    m_scaler = nullptr;
}

void oxMovieWriter::abandon()
{
    release();
    if (!m_temporary.empty())
        oxPartialFiles::discard(m_temporary);
    m_temporary.clear();
}

bool oxMovieWriter::open(const std::string& path, int width, int height, int fps,
                         std::string& error)
{
    if (fps <= 0) {
        error = "the frame rate " + std::to_string(fps) + " is not valid";
        return false;
    }
    m_path = path;
    m_width = width;
    m_height = height;
    m_temporary = oxImageEncoder::temporaryName(path);

    const AVOutputFormat* container = av_guess_format("avi", nullptr, nullptr);
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    if (!container || !codec) {
        error = "no AVI container or Motion JPEG encoder";
        return false;
    }
    int result = avformat_alloc_output_context2(&m_format, container, nullptr, m_temporary.c_str());
    if (result < 0 || !m_format) {
        error = ffmpegError(result);
        return false;
    }
    AVStream* stream = avformat_new_stream(m_format, nullptr);
    m_codec = avcodec_alloc_context3(codec);
    m_frame = av_frame_alloc();
    m_packet = av_packet_alloc();
    if (!stream || !m_codec || !m_frame || !m_packet) {
        error = "out of memory";
        abandon();
        return false;
    }
    m_codec->width = width;
    m_codec->height = height;
    m_codec->pix_fmt = AV_PIX_FMT_YUVJ420P;
    m_codec->time_base = AVRational{1, fps};
    m_codec->framerate = AVRational{fps, 1};
    // A fixed quantiser gives good quality at a size that stays proportional to the frames.
    m_codec->flags |= AV_CODEC_FLAG_QSCALE;
    m_codec->global_quality = FF_QP2LAMBDA * 3;
    if (m_format->oformat->flags & AVFMT_GLOBALHEADER)
        m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if ((result = avcodec_open2(m_codec, codec, nullptr)) < 0 ||
        (result = avcodec_parameters_from_context(stream->codecpar, m_codec)) < 0) {
        error = ffmpegError(result);
        abandon();
        return false;
    }
    stream->time_base = m_codec->time_base;
    stream->avg_frame_rate = m_codec->framerate;

    m_frame->format = m_codec->pix_fmt;
    m_frame->width = width;
    m_frame->height = height;
    if ((result = av_frame_get_buffer(m_frame, 0)) < 0 ||
        (result = avio_open(&m_format->pb, m_temporary.c_str(), AVIO_FLAG_WRITE)) < 0 ||
        (result = avformat_write_header(m_format, nullptr)) < 0) {
        error = ffmpegError(result);
        abandon();
        return false;
    }
    m_headerWritten = true;
    // Motion JPEG wants full-range YUV 4:2:0. The scaler is asked for the same layout under
    // its current name with the full range switched on, which the old "J" name stands for.
    m_scaler = sws_getContext(width, height, AV_PIX_FMT_RGB24, width, height, AV_PIX_FMT_YUV420P,
                              SWS_BICUBIC, nullptr, nullptr, nullptr);
    if (!m_scaler) {
        error = "no colour conversion to YUV";
        abandon();
        return false;
    }
    const int* coefficients = sws_getCoefficients(SWS_CS_ITU601);
    sws_setColorspaceDetails(m_scaler, coefficients, 1, coefficients, 1, 0, 1 << 16, 1 << 16);
    return true;
}

bool oxMovieWriter::encode(AVFrame* frame, std::string& error)
{
    int result = avcodec_send_frame(m_codec, frame);
    if (result < 0) {
        error = ffmpegError(result);
        return false;
    }
    while ((result = avcodec_receive_packet(m_codec, m_packet)) >= 0) {
        av_packet_rescale_ts(m_packet, m_codec->time_base, m_format->streams[0]->time_base);
        m_packet->stream_index = 0;
        result = av_interleaved_write_frame(m_format, m_packet);
        av_packet_unref(m_packet);
        if (result < 0) {
            error = ffmpegError(result);
            return false;
        }
    }
    if (result != AVERROR(EAGAIN) && result != AVERROR_EOF) {
        error = ffmpegError(result);
        return false;
    }
    return true;
}

bool oxMovieWriter::addFrame(const float* rgba, std::string& error)
{
    if (!m_codec) {
        error = "the movie is not open";
        return false;
    }
    // The scaler reads its input with vector loads: rows start aligned and the buffer is
    // padded past the last row, as the codec library asks of every input buffer.
    const size_t stride = (size_t(m_width) * 3 + 63) / 64 * 64;
    const size_t size = stride * size_t(m_height) + AV_INPUT_BUFFER_PADDING_SIZE;
    std::unique_ptr<uint8_t, void (*)(void*)> rgb(static_cast<uint8_t*>(av_mallocz(size)), av_free);
    if (!rgb) {
        error = "out of memory for a movie frame";
        return false;
    }
    // Movie frames are display-referred, as every 8-bit image is.
    static const oxDisplayCurve curve = oxDisplayCurve::sRGB();
    for (size_t y = 0; y < size_t(m_height); ++y) {
        const float* in = rgba + y * size_t(m_width) * 4;
        uint8_t* out = rgb.get() + y * stride;
        for (size_t x = 0; x < size_t(m_width); ++x)
            for (size_t c = 0; c < 3; ++c)
                out[x * 3 + c] =
                    uint8_t(oxApplyDisplayCurve(curve.table(), in[x * 4 + c]) * 255.0f + 0.5f);
    }
    int result = av_frame_make_writable(m_frame);
    if (result < 0) {
        error = ffmpegError(result);
        return false;
    }
    const uint8_t* source[1] = {rgb.get()};
    const int strides[1] = {int(stride)};
    sws_scale(m_scaler, source, strides, 0, m_height, m_frame->data, m_frame->linesize);
    m_frame->pts = m_index++;
    return encode(m_frame, error);
}

bool oxMovieWriter::finish(std::string& error)
{
    if (!m_codec) {
        error = "the movie is not open";
        return false;
    }
    if (!encode(nullptr, error))
        return false;
    const int result = av_write_trailer(m_format);
    if (result < 0) {
        error = ffmpegError(result);
        abandon();
        return false;
    }
    release();
    const std::string temporary = m_temporary;
    m_temporary.clear();
    return oxImageEncoder::commitTemporary(temporary, m_path, error);
}
