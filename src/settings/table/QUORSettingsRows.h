// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSettingsKey.h"

/// The rows of the table of settings, by file and group. Whoever adds a key adds its row here, reads it by
/// that row and gives it a line in the settings guide.
namespace QUORSettingsRows {

using Key = QUORSettingsKey;
using View = std::string_view;

inline constexpr double UNBOUNDED = std::numeric_limits<double>::max();
inline constexpr double MAXIMUM_WHOLE = std::numeric_limits<int>::max();

/// A place in the files, with a function for each kind of key.
struct Group {
    Key::File file;
    View group;
    View array{};
    Key::Use use = Key::Use::Service;

    constexpr Key key(View name, Key::Type type, std::array<double, 3> fallback, View meaning) const {
        Key row;
        row.file = file;
        row.group = group;
        row.array = array;
        row.name = name;
        row.type = type;
        row.number = fallback;
        row.meaning = meaning;
        row.use = use;
        return row;
    }
    constexpr Key flag(View name, bool fallback, View meaning) const {
        return key(name, Key::Type::Flag, {fallback ? 1.0 : 0.0}, meaning);
    }
    constexpr Key whole(View name, int fallback, double low, double high, View meaning,
                        Key::Beyond beyond = Key::Beyond::Refused) const {
        return ranged(key(name, Key::Type::Whole, {double(fallback)}, meaning), low, high, beyond);
    }
    constexpr Key whole(View name, int fallback, View meaning) const {
        return whole(name, fallback, -MAXIMUM_WHOLE - 1.0, MAXIMUM_WHOLE, meaning);
    }
    constexpr Key number(View name, double fallback, double low, double high, View meaning,
                         Key::Beyond beyond = Key::Beyond::Refused) const {
        return ranged(key(name, Key::Type::Number, {fallback}, meaning), low, high, beyond);
    }
    constexpr Key number(View name, double fallback, View meaning) const {
        return number(name, fallback, -UNBOUNDED, UNBOUNDED, meaning);
    }
    constexpr Key computed(View name, View fallback, View meaning) const {
        Key row = number(name, 0.0, meaning);
        row.computed = fallback;
        return row;
    }
    constexpr Key text(View name, View fallback, View meaning) const {
        Key row = key(name, Key::Type::Text, {}, meaning);
        row.text = fallback;
        return row;
    }
    constexpr Key directory(View name, View fallback, View meaning) const {
        Key row = text(name, fallback, meaning);
        row.type = Key::Type::Directory;
        return row;
    }
    constexpr Key choice(View name, View fallback, View choices, View meaning) const {
        Key row = text(name, fallback, meaning);
        row.type = Key::Type::Choice;
        row.choices = choices;
        return row;
    }
    constexpr Key color(View name, std::array<double, 3> fallback, View meaning) const {
        return ranged(key(name, Key::Type::Color, fallback, meaning), 0.0, 1.0, Key::Beyond::Limited);
    }
    constexpr Key opacity(View name, View meaning) const {
        return number(name, 1.0, 0.0, 1.0, meaning, Key::Beyond::Limited);
    }
    constexpr Key lineWidth(View name, double fallback, View meaning) const {
        return number(name, fallback, 0.01, 64.0, meaning);
    }
    constexpr Key length(View name, double fallback, View meaning) const {
        return number(name, fallback, 0.01, 1.0e6, meaning);
    }
    static constexpr Key numbered(Key row, View numbers) {
        row.choices = numbers;
        return row;
    }
    static constexpr Key ranged(Key row, double low, double high, Key::Beyond beyond) {
        row.minimum = low;
        row.maximum = high;
        row.beyond = beyond;
        return row;
    }
};

inline constexpr Group GENERAL{Key::File::Main, "GENERAL"};
inline constexpr Group GENERAL_CLIENT{Key::File::Main, "GENERAL", {}, Key::Use::Client};
inline constexpr Group PRODUCT{Key::File::Main, "PRODUCT * *"};
inline constexpr Group SURFACE{Key::File::Main, "PRODUCT * *", "surface"};
inline constexpr Group DISPLAY_STATES{Key::File::Main, "DISPLAYSTATE", "DISPLAYSTATES"};
inline constexpr Group VIEW_ANGLES{Key::File::Main, "VIEWANGLE", "VIEWANGLES"};
inline constexpr Group EXPORT{Key::File::Main, "EXPORT", {}, Key::Use::Client};
inline constexpr Group HELP{Key::File::Main, "HELP", {}, Key::Use::Client};
inline constexpr Group DIALOG{Key::File::Main, "DIALOG", {}, Key::Use::Client};
inline constexpr Group BACKGROUND{Key::File::Background, "BACKGROUND"};
inline constexpr Group PRODUCTS{Key::File::Background, "BACKGROUND", "products"};
inline constexpr Group VIEWS{Key::File::Background, "BACKGROUND", "views"};
inline constexpr Group COLOR_SCALE{Key::File::Colors, "COLORSCALE *"};
inline constexpr Group SEAMS{Key::File::Colors, "COLORSCALE *", "points"};
inline constexpr Group COLOR_SET{Key::File::Colors, "COLORSET *"};
inline constexpr Group COLORS{Key::File::Colors, "COLORSET *", "points"};
inline constexpr Group DATA_MAPPING{Key::File::Colors, "DATAMAPPING", "data"};
inline constexpr Group RENDERER{Key::File::Styles, "RENDERER_*"};
inline constexpr Group COMPASS{Key::File::Styles, "COMPASS_*"};
inline constexpr Group OUTLINE{Key::File::Styles, "OUTLINE3D_*"};
inline constexpr Group GRID{Key::File::Styles, "LATLONGRID_*"};
inline constexpr Group RINGS{Key::File::Styles, "RADARRINGS_*"};
inline constexpr Group CURSOR{Key::File::Styles, "CURSORTOOL_*", {}, Key::Use::Client};
inline constexpr Group LANDMARKS{Key::File::Landmarks, "LANDMARKS", "landmarks"};

inline constexpr std::array<double, 3> BLACK{0.0, 0.0, 0.0};
inline constexpr std::array<double, 3> GREY{0.3, 0.3, 0.3};
inline constexpr Key::Beyond LIMITED = Key::Beyond::Limited;
inline constexpr View LAYERS = "10|11|12|13|40|41|42|43|44";
inline constexpr View FORMATS = "TIFF|PNG|JPEG";
inline constexpr View LOWEST = "the lowest value of the data type";
inline constexpr double LARGEST_SIDE = 16384.0; // pixels

inline constexpr auto ROWS = std::to_array<Key>({
    GENERAL.directory("data3d", "", "directory of the 3D products"),
    GENERAL.directory("data2d", "", "directory of the 2D products"),
    GENERAL.directory("geolayer", "", "directory of the terrain tiles"),
    GENERAL.whole("timewindow", 180, 0.0, MAXIMUM_WHOLE,
                  "seconds: a 2D and a 3D product within half of it of each other count as taken at the same "
                  "time"),
    GENERAL.flag("clock24hours", true, "times with a 24-hour clock, otherwise with AM and PM"),
    GENERAL.flag("metricunits", true, "km and m, otherwise nautical miles and feet"),
    GENERAL.choice("latlonunits", "d", "d|Dm|DMs",
                   "coordinates as decimal degrees, degrees and minutes, or degrees, minutes and seconds"),
    GENERAL.number("verticalscale", 5.0, 0.001, 1000.0, "factor by which heights are stretched"),
    // Beyond these the scene degenerates or the filters' kernels outgrow memory.
    GENERAL.whole("datashrink_h", 4, 1.0, 10000.0, "horizontal reduction of the 3D data; 1 for none",
                  LIMITED),
    GENERAL.whole("datashrink_v", 1, 1.0, 10000.0, "vertical reduction of the 3D data; 1 for none", LIMITED),
    GENERAL.number("datasmooth", 1.0, 0.0, 100.0,
                   "smoothing of the 3D data, a standard deviation in grid points; 0 for none", LIMITED),
    GENERAL_CLIENT.flag("livemode", false, "of a client"),
    GENERAL_CLIENT.text("livemode_site", "", "of a client"),
    GENERAL_CLIENT.text("livemode_product3d", "", "of a client"),
    GENERAL_CLIENT.text("livemode_product2d", "", "of a client"),
    GENERAL_CLIENT.whole("animtimespan", 0, "of a client"),
    GENERAL_CLIENT.whole("animframeinterval", 0, "of a client"),
    GENERAL_CLIENT.whole("animloopmode", 0, "of a client"),
    GENERAL_CLIENT.whole("animspeed", 0, "of a client"),

    BACKGROUND.flag("activated", false,
                    "whether an operator has switched background rendering on; without it the service warns "
                    "once, and renders"),
    BACKGROUND.directory("directory", ".", "output directory of the images"),
    BACKGROUND.choice("outputformat", "TIFF", FORMATS,
                      "anything else writes PNG under a name that ends in \".\", with a warning"),
    BACKGROUND.whole("width", 1600, 1.0, LARGEST_SIDE, "pixels"),
    BACKGROUND.whole("height", 1200, 1.0, LARGEST_SIDE, "pixels"),
    BACKGROUND.text("displaystate", "Default", "name of a [display state](#display-states)"),
    BACKGROUND.text("viewangle", "Default", "name of a [view angle](#view-angles)"),
    BACKGROUND.whole(
        "wait2d", -1, -1.0, 86400.0,
        "seconds after its arrival at which a 3D product is drawn without its 2D product when that "
        "has not come, and again when it comes; -1 for never"),
    BACKGROUND.text("metrics", "",
                    "file of the [metrics](operating.md#watching-the-service); empty for none"),
    BACKGROUND.whole("joblimit", 120, 1.0, 86400.0,
                     "seconds after which a job counts as stuck and a watchdog is no longer fed"),
    BACKGROUND.text("sites", "",
                    "the sites that are drawn, separated by blanks or commas, with `*` and `?` for any "
                    "characters; all without it"),
    PRODUCTS.choice("product", "SRI", "SRI|PPI|VIL|MAX|(none)",
                    "2D product for one kind of 3D product, `(none)` to draw without"),
    VIEWS.text("viewangle", "",
               "a further picture of every product: its view angle, as above where it is empty"),
    VIEWS.text("displaystate", "", "its display state, likewise"),
    VIEWS.whole("width", 0, 0.0, LARGEST_SIDE, "its size, pixels; 0 for that above"),
    VIEWS.whole("height", 0, 0.0, LARGEST_SIDE, "likewise"),

    PRODUCT.choice("rendering", "surface", "surface|volume",
                   "with anything else the product is not drawn, with a warning"),
    PRODUCT.text("colormap", "Default", "name of a [colour scale](#colour-scales)"),
    SURFACE.computed("isovalue", LOWEST, "in the units of the product"),
    SURFACE.whole("opacity", 100, 0.0, 100.0, "percent", LIMITED),
    PRODUCT.computed("volumevaluelow", LOWEST, "where the volume begins to show"),
    Group::ranged(PRODUCT.number("volumeopacitylow", 1.0, "percent"), 0.0, 100.0, LIMITED),
    PRODUCT.computed("volumevaluehigh", "0.7 of the highest value",
                     "where the volume reaches its highest opacity"),
    Group::ranged(PRODUCT.number("volumeopacityhigh", 100.0, "percent"), 0.0, 100.0, LIMITED),

    DISPLAY_STATES.text("displayStateName", "", "what `displaystate` names"),
    Group::numbered(DISPLAY_STATES.flag("displayStateLayerVisible*", false,
                                        "whether the layer, or the whole group, is shown"),
                    LAYERS),
    Group::numbered(DISPLAY_STATES.whole("displayStateLayerOpacity*", 0, 0.0, 100.0,
                                         "percent; kept for a client, the service draws by visibility",
                                         LIMITED),
                    LAYERS),
    VIEW_ANGLES.text("viewAngleName", "", "what `viewangle` names"),
    VIEW_ANGLES.number("viewAngleCamPosX", 0.0, "camera position, metres east of the radar"),
    VIEW_ANGLES.number("viewAngleCamPosY", 0.0, "metres north of the radar"),
    VIEW_ANGLES.number("viewAngleCamPosZ", 0.0, "metres above the sea, stretched like heights"),
    VIEW_ANGLES.number("viewAngleCamDirX", 0.0, "viewing direction towards the east, of any length"),
    VIEW_ANGLES.number("viewAngleCamDirY", 0.0, "towards the north"),
    VIEW_ANGLES.number("viewAngleCamDirZ", 0.0, "upwards"),
    VIEW_ANGLES.number("viewAngleHeading", 0.0, -360.0, 360.0,
                       "with `viewAngleFit`: the direction looked to, degrees clockwise from north"),
    VIEW_ANGLES.number("viewAnglePitch", 40.0, 0.0, 90.0, "with `viewAngleFit`: degrees below the horizon"),
    VIEW_ANGLES.flag(
        "viewAngleFit", false,
        "the camera stands where the whole product is in the picture, as large as it can be, and "
        "clear of bar, compass and legend; position and direction do not count then"),

    EXPORT.flag("colorbar", true, "colour bar in the image"),
    EXPORT.flag("legend", true, "legend in the image"),
    EXPORT.flag("compass", true, "compass in the image"),
    EXPORT.whole("width", 0, 0.0, LARGEST_SIDE, "pixels; 0 for none chosen"),
    EXPORT.whole("height", 0, 0.0, LARGEST_SIDE, "pixels; 0 for none chosen"),
    EXPORT.choice("outputformat", "TIFF", FORMATS, "of the last export"),
    EXPORT.directory("outputpath", ".", "directory of the last export"),
    HELP.text("command", "", "of a client"),
    HELP.text("file", "", "of a client"),
    DIALOG.text("mainwindowpos", "", "of a client"),
    DIALOG.text("cursortoolpos", "", "of a client"),
    DIALOG.text("cursortoolexpanded", "", "of a client"),
    DIALOG.text("productinfopos", "", "of a client"),
    DIALOG.text("productinfoexpanded", "", "of a client"),
    DIALOG.text("extrawinpos", "", "of a client"),

    COLOR_SCALE.text("name", "default", "what `colormap` names"),
    COLOR_SCALE.whole("data_index", 0, "colour group of the scale"),
    COLOR_SCALE.whole("colorset_index", 1, "number of its colour set"),
    COLOR_SCALE.flag("low_saturate", false, "kept"),
    COLOR_SCALE.flag("hi_saturate", true, "kept"),
    COLOR_SCALE.text("label_format", "3.0f", "of the colour bar's labels"),
    COLOR_SCALE.text("data_units", "N/A", "title of the colour bar"),
    SEAMS.number("seam", 1.0, "a boundary, in the units of the product; ascending"),
    COLOR_SET.text("name", "default", "name of the set"),
    COLOR_SET.text("colorspace", "RGB", "kept"),
    COLORS.whole("lower/r", 0, 0.0, 255.0, "red where the interval begins", LIMITED),
    COLORS.whole("lower/g", 0, 0.0, 255.0, "green there", LIMITED),
    COLORS.whole("lower/b", 0, 0.0, 255.0, "blue there", LIMITED),
    COLORS.whole("upper/r", 0, 0.0, 255.0, "red where the interval ends", LIMITED),
    COLORS.whole("upper/g", 0, 0.0, 255.0, "green there", LIMITED),
    COLORS.whole("upper/b", 0, 0.0, 255.0, "blue there", LIMITED),
    DATA_MAPPING.whole("data_index", 0, "colour group of a data type"),
    DATA_MAPPING.text("name", "", "legend text of that data type"),

    RENDERER.color("background/color", {0.15, 0.25, 0.3}, "background"),
    RENDERER.color("ambient/color", {0.55, 0.6, 0.65}, "ambient light"),
    RENDERER.color("light/color", {1.0, 0.98, 0.9}, "light"),
    RENDERER.color("colorscale/background/color", {0.8, 0.8, 0.8}, "behind the colour bar"),
    RENDERER.color("legend/text/color", BLACK, "legend"),
    RENDERER.color("site/marker/color", GREY, "radar site"),
    RENDERER.length("site/marker/radius", 5000.0, "radar site; metres"),
    RENDERER.number("terrain/missing", 1.0, 0.0, 1.0,
                    "1 draws tiles that there are no data of like sea; 0 leaves them out"),
    RENDERER.number(
        "label/apart", 0.0, 0.0, 1.0,
        "1 leaves out the name of a landmark that would overlap one of a smaller priority number, and "
        "degrees and distances that would overlap another text, bar, compass or legend, or are too small "
        "to be read, and has them lean towards a low camera; 0 draws all"),
    RENDERER.number(
        "legend/details", 0.0, 0.0, 1.0,
        "1 for further lines over the legend: UTC, height factor and ticks, the scale of a map that is "
        "larger than the ground, 2D product and its colours, isovalues with theirs; 0 for none"),
    COMPASS.color("compass/color", GREY, "compass"),
    COMPASS.opacity("compass/opacity/highlighted", "its opacity under a client's mouse"),
    COMPASS.opacity("compass/opacity/nonhighlighted", "its opacity"),
    OUTLINE.color("line/color", GREY, "edges of the data"),
    OUTLINE.lineWidth("line/width", 2.0, "pixels"),
    OUTLINE.color("tick/color", GREY, "height ticks"),
    OUTLINE.lineWidth("tick/width", 1.0, "pixels"),
    GRID.color("line/color", GREY, "lines"),
    GRID.lineWidth("line/width", 1.0, "pixels"),
    GRID.color("label/color", GREY, "labels"),
    GRID.length("label/size", 10000.0, "height of the letters; metres"),
    GRID.number(
        "label/inner", 0.0, 0.0, 1.0,
        "1 labels the lines at the data's edges too, where every camera has them in view; 0 at their ends "
        "only"),
    GRID.color("label/halo/color", BLACK, "an edge round the letters"),
    GRID.number("label/halo/width", 0.0, 0.0, 16.0, "its width in pixels; 0 for none"),
    RINGS.color("line/color", GREY, "lines"),
    RINGS.lineWidth("line/width", 1.0, "pixels"),
    RINGS.color("label/color", GREY, "labels"),
    RINGS.length("label/size", 10000.0,
                 "height of the letters; 400000ths of the outer radius, so that 10000 is one fortieth of it"),
    RINGS.color("label/halo/color", BLACK, "an edge round the letters"),
    RINGS.number("label/halo/width", 0.0, 0.0, 16.0, "its width in pixels; 0 for none"),
    CURSOR.color("line/selected/color", GREY, "of a client's point widget"),
    CURSOR.lineWidth("line/selected/width", 2.0, "of a client's point widget; pixels"),
    CURSOR.color("line/unselected/color", GREY, "of a client's point widget"),
    CURSOR.lineWidth("line/unselected/width", 1.0, "of a client's point widget; pixels"),
    CURSOR.length("marker/radius", 5100.0, "of a client's point widget; metres"),
    CURSOR.color("home/marker/color", GREY, "of a client's point widget"),
    CURSOR.color("home/label/color", GREY, "of a client's point widget"),
    CURSOR.number("home/label/fontsize", 8.0, 1.0, 200.0, "of a client's point widget; points"),

    LANDMARKS.text("label", "", "the text; an element without one is left out"),
    LANDMARKS.number("location/lat", 0.0, -90.0, 90.0,
                     "degrees, north positive; an element without it is left out"),
    LANDMARKS.number("location/lon", 0.0, -180.0, 180.0,
                     "degrees, east positive; an element without it is left out"),
    LANDMARKS.number("location/alt", 0.0, "metres"),
    LANDMARKS.number("color/r", 0.0, 0.0, 1.0, "red", Key::Beyond::Kept),
    LANDMARKS.number("color/g", 0.0, 0.0, 1.0, "green", Key::Beyond::Kept),
    LANDMARKS.number("color/b", 0.0, 0.0, 1.0, "blue", Key::Beyond::Kept),
    LANDMARKS.whole("priority", 1, 0.0, 5.0, "0 (large) to 5 (small)", Key::Beyond::Kept),
});

} // namespace QUORSettingsRows
