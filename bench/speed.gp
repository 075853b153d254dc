# Draws the figures that `compare --csv FILE` writes:
#   gnuplot -c bench/speed.gp FILE docs/speed.svg
set terminal svg size 960,520 font "sans-serif,13" background "white"
set output ARG2
set datafile separator ","
set style data histograms
set style histogram clustered gap 1
set style fill solid border -1
set boxwidth 0.9
set logscale y
set yrange [0.005:20000]
set ylabel "ms (logarithmic)"
set grid ytics
set xtics nomirror rotate by -20
set bmargin 7
set rmargin 14
set key outside top center horizontal
set title "A rule in YANG, above a validation without it, and the whole commit through the plug-in"
plot ARG1 every ::1 using 3:xtic(1) title "YANG, one card" linecolor rgb "#f2b880", \
     ARG1 every ::1 using 2 title "commit, one card" linecolor rgb "#7fb2dd", \
     ARG1 every ::1 using 5 title "YANG, four cards" linecolor rgb "#c96a1b", \
     ARG1 every ::1 using 4 title "commit, four cards" linecolor rgb "#1f5f99"
