// jewlkit-imaging: decodes one picture in a format Qt lacks (PCX, PhotoCD,
// WMF, WPG) with ImageMagick and writes it to standard output as the line
// "JKIMG <width> <height> <alpha>\n" followed by width * height RGBA bytes;
// with --ping only the line. Errors go to standard error, exit code 1.
//
// It is a process of its own because ImageMagick 6 can only enforce a time
// limit by ending the whole process (the limit counts from the first picture
// a process ever decoded), and because a decoder fault must not take the
// program down. The program stops it from outside as well.
//
//   jewlkit-imaging [--ping] --format PCX|PCD|WMF|WPG --dpi N
//                   --max-mb N --max-side N --seconds N FILE
#include <Magick++.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct Args {
    bool ping = false;
    std::string format, file;
    double dpi = 96;
    unsigned long long maxBytes = 256ull << 20;
    unsigned long long maxSide = 30000;
    unsigned long long seconds = 20;
};

int fail(const std::string& why)
{
    std::fprintf(stderr, "%s\n", why.c_str());
    return 1;
}

bool parse(int argc, char** argv, Args& a)
{
    for (int i = 1; i < argc; ++i) {
        const std::string k = argv[i];
        auto next = [&](std::string& v) {
            if (i + 1 >= argc) return false;
            v = argv[++i];
            return true;
        };
        std::string v;
        if (k == "--ping") a.ping = true;
        else if (k == "--format" && next(v)) a.format = v;
        else if (k == "--dpi" && next(v)) a.dpi = std::atof(v.c_str());
        else if (k == "--max-mb" && next(v)) a.maxBytes = std::strtoull(v.c_str(), nullptr, 10) << 20;
        else if (k == "--max-side" && next(v)) a.maxSide = std::strtoull(v.c_str(), nullptr, 10);
        else if (k == "--seconds" && next(v)) a.seconds = std::strtoull(v.c_str(), nullptr, 10);
        else if (k.rfind("--", 0) != 0 && a.file.empty()) a.file = k;
        else return false;
    }
    return !a.file.empty() && a.dpi > 0 && a.maxBytes > 0 && a.maxSide > 0 && a.seconds > 0;
}

}  // namespace

int main(int argc, char** argv)
{
    Args a;
    if (!parse(argc, argv, a)) return fail("usage: jewlkit-imaging [--ping] --format F --dpi N --max-mb N --max-side N --seconds N FILE");
    // Only the coders the program needs: the file was already recognised by
    // its bytes, and naming the coder keeps ImageMagick from guessing another.
    if (a.format != "PCX" && a.format != "PCD" && a.format != "WMF" && a.format != "WPG")
        return fail("unsupported format " + a.format);

    // Read the file ourselves: ImageMagick then never interprets the name
    // (frame suffixes, "@" lists, coder prefixes).
    std::ifstream in(a.file, std::ios::binary | std::ios::ate);
    if (!in) return fail("the file cannot be opened");
    const std::streamoff size = in.tellg();
    if (size <= 0) return fail("the file is empty");
    if (static_cast<unsigned long long>(size) > a.maxBytes) return fail("the file is too large");
    std::vector<char> data(static_cast<std::size_t>(size));
    in.seekg(0);
    if (!in.read(data.data(), size)) return fail("the file cannot be read");

    Magick::InitializeMagick(argv[0]);
    // The pixel cache holds 8 bytes a pixel (16-bit RGBA); what does not fit
    // in memory goes to the scratch folder the program gives us. Debian's
    // policy may lower any of these further.
    using RL = Magick::ResourceLimits;
    RL::width(a.maxSide);
    RL::height(a.maxSide);
    RL::area(a.maxBytes / 4);  // pixels
    RL::memory(a.maxBytes);
    RL::map(2 * a.maxBytes);
    RL::disk(2 * a.maxBytes);
    RL::listLength(16);
    RL::thread(1);
    MagickCore::SetMagickResourceLimit(MagickCore::TimeResource, a.seconds);

    try {
        Magick::Image img;
        img.quiet(true);  // warnings about odd but readable files are no failure
        // One frame is enough, but PhotoCD takes the frame count as its
        // resolution choice: left alone it reads the 768 x 512 base image.
        if (a.format != "PCD") img.subRange(1);
        img.density(Magick::Geometry(static_cast<size_t>(a.dpi + 0.5), static_cast<size_t>(a.dpi + 0.5)));
        img.magick(a.format);
        const Magick::Blob blob(data.data(), data.size());
        // The header's claim first: a picture too big is refused before a
        // single pixel is decoded.
        img.ping(blob);
        auto refused = [&](size_t w, size_t h) -> const char* {
            if (w == 0 || h == 0) return "the picture is empty";
            if (w > a.maxSide || h > a.maxSide || 4ull * w * h > a.maxBytes) return "the picture is too large";
            return nullptr;
        };
        if (const char* why = refused(img.columns(), img.rows())) return fail(why);
        if (!a.ping) {
            img.read(blob);
            if (const char* why = refused(img.columns(), img.rows())) return fail(why);
            // PhotoCD comes as YCC; exported pixels are taken as they are.
            if (img.colorSpace() != Magick::sRGBColorspace) img.colorSpace(Magick::sRGBColorspace);
        }
        const size_t w = img.columns(), h = img.rows();
        std::printf("JKIMG %zu %zu %d\n", w, h, img.matte() ? 1 : 0);
        if (!a.ping) {
            std::vector<unsigned char> px(4 * w * h);
            img.write(0, 0, w, h, "RGBA", Magick::CharPixel, px.data());
            if (std::fwrite(px.data(), 1, px.size(), stdout) != px.size()) return fail("the picture could not be written");
        }
        std::fflush(stdout);
    } catch (const Magick::Exception& e) {
        // "prog: reason `name' @ error/coder.c/Function/line" -> "reason"
        std::string why = e.what();
        const std::string::size_type colon = why.find(": ");
        if (colon != std::string::npos) why.erase(0, colon + 2);
        const std::string::size_type tail = why.find_first_of("`@");
        if (tail != std::string::npos) why.erase(tail);
        while (!why.empty() && why.back() == ' ') why.pop_back();
        return fail(why.empty() ? std::string("the picture cannot be read") : why);
    } catch (const std::exception& e) {
        return fail(e.what());
    }
    return 0;
}
