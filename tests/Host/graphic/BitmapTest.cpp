// Bitmaps read from files the tests write: PNG through Qt's readers, SVG drawn at its size, and
// the files and depths that are refused.
#include "graphic/BM_Bitmap.h"
#include "graphic/VS_Canvas.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

namespace {

class BitmapTest : public ::testing::Test {
protected:
    QString path(QString const &name) const { return dir.filePath(name); }

    QString write(QString const &name, QByteArray const &contents) const
    {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return file.fileName();
    }

    QTemporaryDir dir;
};

} // namespace

TEST_F(BitmapTest, APngKeepsItsSizeAndEveryPixel)
{
    QImage image(3, 2, QImage::Format_ARGB32);
    image.setPixelColor(0, 0, QColor(255, 0, 0));
    image.setPixelColor(1, 0, QColor(0, 255, 0));
    image.setPixelColor(2, 0, QColor(0, 0, 255));
    image.setPixelColor(0, 1, QColor(10, 20, 30, 40));
    image.setPixelColor(1, 1, QColor(255, 255, 255));
    image.setPixelColor(2, 1, QColor(0, 0, 0, 0));
    ASSERT_TRUE(image.save(path("icon.png")));

    QString error = "unchanged";
    UT_SharedPtr<BM_Bitmap> const bitmap = CELIO_BitmapEngine::load(path("icon.png"), 8, &error);
    ASSERT_TRUE(bitmap);
    EXPECT_TRUE(error.isEmpty());
    EXPECT_EQ(bitmap->GetWidth(), 3);
    EXPECT_EQ(bitmap->GetHeight(), 2);
    // Rows top first, no padding: the fourth pixel is the first of the second row.
    VS_RGBA const *pixels = bitmap->GetPixels();
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(pixels[0], VS_RGBA(255, 0, 0));
    EXPECT_EQ(pixels[2], VS_RGBA(0, 0, 255));
    EXPECT_EQ(pixels[3], VS_RGBA(10, 20, 30, 40));
    EXPECT_EQ(pixels[4], VS_RGBA(255, 255, 255));
    EXPECT_EQ(bitmap->pixel(1, 0), VS_RGBA(0, 255, 0));
    EXPECT_EQ(bitmap->pixel(2, 1).a, 0);
    EXPECT_EQ(bitmap->pixel(3, 0), VS_RGBA(0, 0, 0, 0));
    EXPECT_EQ(bitmap->pixel(-1, 0), VS_RGBA(0, 0, 0, 0));

    // Its pixels make a texture as they are; the picture's top left is texture coordinate (0, 1).
    VS_Canvas canvas(1, 1);
    VS_TexturePtr const texture = canvas.createTexture(1, 7, bitmap->GetWidth(), bitmap->GetHeight(), 0, 7, 0,
                                                       bitmap->GetPixels(), 2, 2, 1, 1, 0);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->sample(0.1, 0.9, false), VS_RGBA(255, 0, 0));
    EXPECT_EQ(texture->sample(0.1, 0.1, false), VS_RGBA(10, 20, 30, 40));
}

TEST_F(BitmapTest, AnSvgIsDrawnAtTheSizeItDeclares)
{
    write("shape.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='8' height='6'>"
                       "<rect x='0' y='0' width='4' height='6' fill='#0000ff'/></svg>");
    UT_SharedPtr<BM_Bitmap> const bitmap = CELIO_BitmapEngine::load(path("shape.svg"));
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->GetWidth(), 8);
    EXPECT_EQ(bitmap->GetHeight(), 6);
    EXPECT_EQ(bitmap->pixel(1, 3), VS_RGBA(0, 0, 255));
    EXPECT_EQ(bitmap->pixel(6, 3).a, 0);
}

TEST_F(BitmapTest, FilesThatCannotBeReadGiveNullAndSaySo)
{
    QImage image(2, 2, QImage::Format_ARGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(path("good.png")));
    write("truncated.png", QByteArray("\x89PNG\r\n\x1a\n", 8));
    write("text.png", "not an image at all");
    write("broken.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='8'");
    write("sizeless.svg", "<svg xmlns='http://www.w3.org/2000/svg'></svg>");

    struct Case {
        char const *what;
        QString file;
        int bits;
    };
    Case const cases[] = {
        {"missing file", path("missing.png"), 8},
        {"a folder", dir.path(), 8},
        {"empty path", QString(), 8},
        {"truncated PNG", path("truncated.png"), 8},
        {"text named .png", path("text.png"), 8},
        {"broken SVG", path("broken.svg"), 8},
        {"SVG without a size", path("sizeless.svg"), 8},
        {"16 bits per channel", path("good.png"), 16},
        {"0 bits per channel", path("good.png"), 0},
        {"negative bits per channel", path("good.png"), -8},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        QString error;
        EXPECT_FALSE(CELIO_BitmapEngine::load(c.file, c.bits, &error));
        EXPECT_TRUE(error.contains(c.file)) << error.toStdString();
    }
    EXPECT_TRUE(CELIO_BitmapEngine::load(path("good.png"), 8));
}

TEST(BM_Bitmap, AnEmptyBitmapHasNoPixels)
{
    BM_Bitmap const empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.GetWidth(), 0);
    EXPECT_EQ(empty.GetPixels(), nullptr);
    EXPECT_TRUE(BM_Bitmap(QImage()).isEmpty());
}
