#include "ui/Icons.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>
#include <map>
#include <memory>

// The resources live in a static library: referencing them keeps the linker from dropping them.
static void initIconResources() { Q_INIT_RESOURCE(icons); }

namespace tlx::ui {

namespace {

std::shared_ptr<QSvgRenderer> renderer(const std::string& name) {
    static std::map<std::string, std::shared_ptr<QSvgRenderer>> cache;
    if (auto it = cache.find(name); it != cache.end()) return it->second;
    static const bool ready = (initIconResources(), true);
    (void)ready;
    const QString path = QStringLiteral(":/icons/") + QString::fromStdString(name) + QStringLiteral(".svg");
    auto r = std::make_shared<QSvgRenderer>();
    if (!name.empty() && QFile::exists(path)) r->load(path);
    return cache[name] = r;
}

// Renders on demand, so the icon is sharp in a 16-pixel list cell and at 200% scale alike.
class SvgIconEngine : public QIconEngine {
public:
    explicit SvgIconEngine(std::shared_ptr<QSvgRenderer> r) : r_(std::move(r)) {}
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override { r_->render(painter, rect); }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1.0);
    }
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode, QIcon::State, qreal scale) override {
        QPixmap pm(size * scale);
        pm.fill(Qt::transparent);
        QPainter p(&pm);
        r_->render(&p, QRectF(QPointF(0, 0), QSizeF(pm.size())));
        p.end();
        pm.setDevicePixelRatio(scale);
        return pm;
    }
    QIconEngine* clone() const override { return new SvgIconEngine(r_); }
    bool isNull() override { return !r_->isValid(); }
    QString key() const override { return QStringLiteral("tlx-svg"); }

private:
    std::shared_ptr<QSvgRenderer> r_;
};

}  // namespace

QIcon icon(const std::string& name) {
    auto r = renderer(name);
    if (!r->isValid()) return {};
    return QIcon(new SvgIconEngine(std::move(r)));
}

QPixmap pixmap(const std::string& name, int size, qreal devicePixelRatio) {
    auto r = renderer(name);
    if (!r->isValid()) return {};
    return SvgIconEngine(std::move(r)).scaledPixmap(QSize(size, size), QIcon::Normal, QIcon::On, devicePixelRatio);
}

}  // namespace tlx::ui
