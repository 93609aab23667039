#!/bin/sh
# Cuts the guide's pictures out of those that ./run --tour DIR has left: cut.sh DIR. Needs ImageMagick.
# The strip chart's pictures come from bench/bench_oscope.
set -eu
tour=$1
cd "$(dirname "$0")"

# Part of the screen in pixels: WIDTHxHEIGHT+LEFT+TOP.
while read -r name part; do
    convert "$tour"/[0-9][0-9]-"$name".png -crop "$part" +repage +dither -colors 256 -strip \
        -define png:exclude-chunks=date,time "PNG8:$name.png"
done << 'END'
alarms 1920x1200+0+0
at-rest 1920x1200+0+0
axis-details 730x675+1190+270
constants 1106x962+412+2
contour 550x900+900+100
device-refused 500x450+200+560
fixed-move 480x520+1440+100
frame 950x898+900+100
information 780x590+570+305
jogging 470x900+1450+100
key-switch 800x360+558+419
line-tacks 575x960+1345+240
line-weld 575x760+1345+440
login 680x420+620+390
points 590x605+320+595
power-off-refused 940x200+0+1000
raster 480x745+1270+455
recorded-run 550x900+900+100
regime-question 1100x300+0+900
ring-tacks 575x960+1345+240
roughing 1440x1000+0+0
technological-stop 550x900+900+100
welding 1920x1200+0+0
END
