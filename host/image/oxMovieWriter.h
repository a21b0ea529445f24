#pragma once

#include <string>

struct AVFormatContext;
struct AVCodecContext;
struct AVFrame;
struct AVPacket;
struct SwsContext;

/// An AVI movie of Motion JPEG frames, written under a temporary name in its folder and
/// renamed when finished; an abandoned movie leaves no file behind.
class oxMovieWriter {
public:
    oxMovieWriter() = default;
    ~oxMovieWriter();
    oxMovieWriter(const oxMovieWriter&) = delete;
    oxMovieWriter& operator=(const oxMovieWriter&) = delete;

    bool open(const std::string& path, int width, int height, int fps, std::string& error);
    /// One frame: width * height RGBA floats, top row first; alpha is dropped.
    bool addFrame(const float* rgba, std::string& error);
    /// Completes the movie and gives it its name.
    bool finish(std::string& error);
    /// Drops the movie: the temporary file is removed.
    void abandon();

private:
    bool encode(AVFrame* frame, std::string& error);
    void release();

    std::string m_path;
    std::string m_temporary;
    int m_width = 0;
    int m_height = 0;
    long long m_index = 0;
    AVFormatContext* m_format = nullptr;
    AVCodecContext* m_codec = nullptr;
    AVFrame* m_frame = nullptr;
    AVPacket* m_packet = nullptr;
    SwsContext* m_scaler = nullptr;
    bool m_headerWritten = false;
};
