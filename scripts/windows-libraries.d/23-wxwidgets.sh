source_package=wxwidgets3.2

# Windows, controls, lists, trees, grids and the system's own choosers. What draws or plays pages, speaks to the net, prints or reads
# pictures other than bitmaps stays out, and so does every library that would be needed for it.
build() {
    local without=({libpng,libjpeg,libtiff,libjbig,zlib,expat,liblzma,regex,nanosvg,opengl,libcurl,winhttp,subdirs})
    local data=({arcstream,tarstream,zipstream,fs_archive,fs_inet,fs_zip,fswatcher,protocol,protocols,ftp,http,fileproto,url}
        {sockets,webrequest,ipc,dialupman,secretstore,snglinst,sound,filehistory,fsvolume,compat30})
    local debugging=({debugreport,dbghelp,catch_segvs,backtrace,debug_flag,tests,loggui,logwin,logdialog})
    local libraries=({html,htmlhelp,help,mshtmlhelp,xrc,aui,propgrid,ribbon,stc,richtext,mediactrl,webview,webviewie,webviewedge})
    local pages=({docview,mdi,mdidoc,printarch,postscript,svg,graphics-d2d,metafile,splines,gif,pcx,tga,iff,pnm,arttango,privatefonts})
    local controls=({actindicator,addremovectrl,animatectrl,bannerwindow,bmpcombobox,calendar,choicebook,collpane,colourpicker}
        {commandlinkbutton,dataviewctrl,datepick,timepick,dirpicker,editablebox,filectrl,filepicker,fontpicker,hyperlink,infobar}
        {listbook,notifmsg,odcombobox,prefseditor,rearrangectrl,richtooltip,sash,searchctrl,slider,splitter,taskbaricon}
        {tipwindow,toolbook,treebook,treelist,miniframe,constraints,spellcheck,busyinfo,hotkey,joystick,dragimage,uiactionsim}
        taskbarbutton)
    local dialogs=({aboutdlg,choicedlg,coldlg,creddlg,finddlg,fontdlg,numberdlg,richmsgdlg,splash,textdlg,tipdlg,progressdlg,wizarddlg})
    local off=("${data[@]}" "${debugging[@]}" "${libraries[@]}" "${pages[@]}" "${controls[@]}" "${dialogs[@]}")
    # A window waits for people, so less optimisation is enough; precompiled headers halve the time again.
    export CFLAGS="${CFLAGS/-O2/-O1}" CXXFLAGS="${CXXFLAGS/-O2/-O1}"
    # Not by `configure`: this script refuses options that it does not know.
    ./configure --host="$triplet" --prefix="$destination" --disable-shared --enable-pch --enable-repro-build \
        --enable-accessibility --disable-sys-libs --disable-dependency-tracking \
        "${without[@]/#/--without-}" "${off[@]/#/--disable-}"
    make -j "$jobs"
    make install

    # wx-config, which would tell how to build with it, names folders: pkg-config does it as for the other libraries.
    local include=$destination/include lib=$destination/lib
    mv "$include/wx-3.2/wx" "$include/wx"
    mv "$lib/wx/include/$triplet-msw-unicode-static-3.2/wx/setup.h" "$include/wx/setup.h"
    sed -i 's/^#define wxINSTALL_PREFIX .*/#define wxINSTALL_PREFIX ""/' "$include/wx/setup.h"
    mv "$lib"/libwx_mswu_core-3.2*.a "$lib/libwx_core.a"
    mv "$lib"/libwx_baseu-3.2*.a "$lib/libwx_base.a"
    rm -r "$lib"/libwx_{baseu,mswu}* "$lib/wx" "$include/wx-3.2" "$destination/share/"{aclocal,bakefile}
    # libuuid and liboleacc both define some names; the one that comes first is asked for them.
    pkg_config_file wxwidgets "-lwx_core -lwx_base -lcomctl32 -lcomdlg32 -lgdi32 -lmsimg32 -limm32 -luser32 -lshell32 -lshlwapi \
-lole32 -loleaut32 -luuid -loleacc -luxtheme -lversion -lwinspool -lwinmm -ladvapi32 -lrpcrt4"
    sed -i "s/^Cflags:.*/& -D__WXMSW__ -DwxDEBUG_LEVEL=0 -DUNICODE -D_UNICODE/" "$lib/pkgconfig/wxwidgets.pc"
}
