// The host's own texts are Vietnamese; those that it is known to send are shown in the page's language.
export const LOI_CUA_MAY = new Map([
  ['Chưa được cấp quyền Ghi màn hình', 'loi.chuaCapGhi'],
  ['Hãy mở lại Tovira để quyền Ghi màn hình có hiệu lực', 'loi.moLai'],
  ['Không tìm thấy màn hình nào', 'loi.khongManHinh'],
  ['Không mở được máy chủ ảnh nội bộ', 'loi.mayChuAnh'],
  ['Không mở được máy chủ nhận tệp', 'loi.mayChuNhan'],
  ['khong-con', 'loi.thuMucMat'],
]);

export const dichLoi = (chu, loi) => (LOI_CUA_MAY.has(loi) ? chu(LOI_CUA_MAY.get(loi)) : loi);
